// The internal string library: one include for all of it. Every function lives
// in namespace StringUtils (with SplitUtils and the global Converter<T>); none is
// exported from the shared library.
#pragma once

#include "StringUtils/HexAndFileName.h"
#include "StringUtils/Addresses.h"
