# Loaded after CMake's Darwin platform rules (CMAKE_USER_MAKE_RULES_OVERRIDE).
# Those rules enable -rpath, and with it @rpath install names, only after asking
# the host's sw_vers for its macOS version; a Linux host has none, but the
# target has supported run paths since 10.5.
foreach(lang C CXX)
  set(CMAKE_SHARED_LIBRARY_RUNTIME_${lang}_FLAG "-Wl,-rpath,")
endforeach()
