#!/bin/bash
# What can be judged without running the library: format, lint, exports. Needs the builds linux-release, linux-clang
# and win64-mingw-release. `scripts/check.sh --fix` formats in place.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t sources < <(git ls-files --cached --others --exclude-standard -- '*.c' '*.cpp' '*.h')
if [[ ${1:-} == --fix ]]; then
  clang-format -i "${sources[@]}"
else
  clang-format --dry-run --Werror "${sources[@]}"
  echo "format: ${#sources[@]} files are clean"
fi

# Files of the other system have no compile command here.
mapfile -t linted < <(git ls-files --cached --others --exclude-standard -- 'Common/*.cpp' 'client/*.cpp' |
  grep -v '_win\.cpp$')
printf '%s\n' "${linted[@]}" | xargs -P "$(nproc)" -n 4 clang-tidy -p build/linux-release --quiet 2> >(grep -v 'warnings generated' >&2)
echo "lint: ${#linted[@]} files are clean"

scripts/check_exports.py exports/Qvclr15x.def \
  build/linux-release/libQvclr15x.so build/linux-clang/libQvclr15x.so build/win64-mingw-release/Qvclr15x.dll

res/make/tables --check
echo "emulation tables: as the profiles make them"
