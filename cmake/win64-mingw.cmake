# 64-bit Windows from Debian: GCC for MinGW with POSIX threads, the static libraries that scripts/setup built, and
# Wine to run what was built.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triplet x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)
set(CMAKE_AR ${triplet}-gcc-ar-posix CACHE FILEPATH "archiver")
set(CMAKE_RANLIB ${triplet}-gcc-ranlib-posix CACHE FILEPATH "index of an archive")

# The same folders as in scripts/lib/windows_libraries.sh.
if(DEFINED ENV{XDG_CACHE_HOME})
  set(cache "$ENV{XDG_CACHE_HOME}/qvclr15x")
else()
  set(cache "$ENV{HOME}/.cache/qvclr15x")
endif()
set(QV_WIN64_PREFIX "${cache}/win64" CACHE PATH "Static libraries for the Windows target")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QV_WIN64_PREFIX)

set(CMAKE_FIND_ROOT_PATH "${QV_WIN64_PREFIX}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Windows aligns the stack to 16 bytes, so a spilled 32-byte vector must not be moved as an aligned one.
set(CMAKE_C_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
set(CMAKE_CXX_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
# No DLL of the compiler (libgcc, libstdc++, winpthread): programs and the library need only what Windows has.
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static")
endforeach()

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/lib/wine")
