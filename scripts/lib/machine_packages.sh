# shellcheck shell=bash
# Debian packages of this machine.  Sourced by scripts/setup.

readonly LINUX_PACKAGES=(cmake ninja-build g++ pkg-config python3 liblcms2-dev libtiff-dev libjpeg62-turbo-dev
  zlib1g-dev libhwy-dev libcli11-dev)
readonly CHECK_PACKAGES=(git clang clang-14 clang-format clang-tidy libclang-rt-14-dev libgtest-dev libgmock-dev
  libbenchmark-dev)
readonly WINDOWS_PACKAGES=(g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64 wine wine64 fonts-wine
  xvfb xauth nasm dpkg-dev xz-utils)
readonly PEER_PACKAGES=(libopencv-dev libyuv-dev libswscale-dev libbabl-dev)
readonly PROFILE_PACKAGES=(argyll icc-profiles-free)

as_root() {
  if ((EUID == 0)); then "$@"; else sudo "$@"; fi
}

is_installed() {
  [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

install_packages() {
  local missing=() package
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  ((${#missing[@]})) || return 0

  say "installing ${missing[*]}"
  local apt=(env DEBIAN_FRONTEND=noninteractive apt-get -qq -o DPkg::Lock::Timeout=600)
  logged packages as_root "${apt[@]}" update
  logged packages as_root "${apt[@]}" install -y --no-install-recommends "${missing[@]}"
}
