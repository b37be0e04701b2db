# shellcheck shell=bash
# Static libraries for the Windows target, built from Debian's sources.  Sourced by scripts/setup.
# $PREFIX is where cmake/win64-mingw.cmake looks; $PREFIX/tiff-tags has a second libtiff without any codec.

readonly PREFIX=$CACHE/win64
readonly TOOLCHAIN=$ROOT/cmake/win64-mingw.cmake
readonly PINS=$ROOT/scripts/windows_packages.txt
readonly RELEASE_FLAGS='-O2 -DNDEBUG'

# A recipe runs in its own source folder.  cmake_build BUILD-FOLDER TARGET OPTION...
cmake_build() {
  local build=$1 target=$2
  shift 2
  CFLAGS=$COMMON_FLAGS CXXFLAGS=$COMMON_FLAGS cmake -S . -B "$build" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" -DQV_WIN64_PREFIX="$PREFIX" -DCMAKE_INSTALL_PREFIX="$PREFIX" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_FLAGS_RELEASE="$RELEASE_FLAGS" -DCMAKE_CXX_FLAGS_RELEASE="$RELEASE_FLAGS" \
    -DBUILD_SHARED_LIBS=OFF -DBUILD_TESTING=OFF "$@" &&
    nice cmake --build "$build" --target "$target"
}

build_zlib() {  # its own install step insists on a DLL
  cmake_build build zlibstatic &&
    install -Dm644 build/libzlibstatic.a "$PREFIX/lib/libz.a" &&
    install -Dm644 -t "$PREFIX/include" zlib.h build/zconf.h
}

build_libjpeg_turbo() {
  cmake_build build install -DENABLE_SHARED=OFF -DWITH_TURBOJPEG=OFF
}

build_tiff() {
  local off=() option
  for option in zlib libdeflate pixarlog jpeg old-jpeg jbig lerc lzma zstd webp cxx; do
    off+=("-D$option=OFF")
  done
  cmake_build build install "${off[@]}" -Dzlib=ON || return
  for option in ccitt packbits lzw thunder next logluv mdi; do
    off+=("-D$option=OFF")
  done
  cmake_build build-tags install "${off[@]}" -DCMAKE_INSTALL_PREFIX="$PREFIX/tiff-tags"
}

build_lcms2() {  # the core only: the plug-ins are under another licence
  CC=x86_64-w64-mingw32-gcc-posix CFLAGS="$COMMON_FLAGS $RELEASE_FLAGS -Wa,-muse-unaligned-vector-move" \
    ./configure --host=x86_64-w64-mingw32 --prefix="$PREFIX" --disable-shared --without-jpeg --without-tiff &&
    nice make -j"$(nproc)" -C src install && make -C include install
}

build_highway() {
  cmake_build build install -DHWY_ENABLE_TESTS=OFF -DHWY_ENABLE_EXAMPLES=OFF -DHWY_ENABLE_CONTRIB=OFF
}

build_googletest() {
  cmake_build build install
}

build_benchmark() {
  cmake_build build install -DGIT_VERSION=1.7.1 -DBENCHMARK_ENABLE_TESTING=OFF \
    -DBENCHMARK_INSTALL_DOCS=OFF
}

# What a built library depends on: its version, its recipe, the shared recipe and the toolchain's compilers and flags.
library_key() {
  local recipe=$1 version=$2
  {
    echo "$version $RELEASE_FLAGS"
    declare -f "$recipe" cmake_build
    grep -E 'COMPILER |FLAGS_INIT' "$TOOLCHAIN"
  } | sha256sum
}

build_library() {
  local package=$1 version=$2 recipe=build_${1//-/_} stamp=$PREFIX/stamps/$1 key
  key=$(library_key "$recipe" "$version")
  [[ $(cat "$stamp" 2>/dev/null) != "$key" ]] || return 0

  say "building $package $version for Windows"
  local folder=$CACHE/build/$package
  local COMMON_FLAGS="-ffp-contract=off -ffile-prefix-map=$folder=$package"
  rm -f "$stamp"
  unpack_source "$package" "$version" "$folder"
  (cd "$folder" && logged "$package" "$recipe") || exit
  rm -rf "$folder"
  echo "$key" >"$stamp"
}

copy_cli11() {  # copied, so that the cross compiler never sees /usr/include
  local version stamp=$PREFIX/stamps/cli11
  version=$(dpkg-query -W -f '${Version}' libcli11-dev)
  [[ $(cat "$stamp" 2>/dev/null) != "$version" ]] || return 0
  say "copying the headers of CLI11 $version"
  rm -rf "$PREFIX/include/CLI"
  mkdir -p "$PREFIX"/{include,share/cmake}
  cp -r /usr/include/CLI "$PREFIX/include/"
  cp -r /usr/share/cmake/CLI11 "$PREFIX/share/cmake/"
  echo "$version" >"$stamp"
}

# A fresh Wine takes seconds to set itself up; the tests find it ready, without a screen and with one.
ready_wine() {
  local version stamp=$PREFIX/stamps/wine
  version="$(dpkg-query -W -f '${Version}' wine64) with a screen"
  [[ $(cat "$stamp" 2>/dev/null) != "$version" ]] || return 0
  say "readying Wine $version"
  # What stays in the background must not keep the lock.
  logged wine "$ROOT/scripts/lib/wine" cmd /c exit 9>&-
  QV_WINE_DPI=96 logged wine "$ROOT/scripts/lib/wine" cmd /c exit 9>&-
  echo "$version" >"$stamp"
}

build_windows_libraries() {
  local package version
  mkdir -p "$PREFIX/stamps" "$CACHE/build"
  while read -r package version <&3; do
    build_library "$package" "$version"
  done 3< <(grep -v '^#' "$PINS")
  copy_cli11
}
