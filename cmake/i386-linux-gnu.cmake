# Builds for 32-bit x86 Linux (Debian's i386) with the machine's own GCC and
# -m32: Debian's g++-multilib, and the 32-bit zlib from lib32z1-dev or
# zlib1g-dev:i386, which find_package(ZLIB) finds here by itself.
#
#   cmake -S . -B build-m32 -G Ninja --toolchain cmake/i386-linux-gnu.cmake
#
# It is not a cross build: an x86-64 kernel runs the 32-bit programs (tests,
# zumcat) itself, and GNUInstallDirs keeps Debian's multiarch layout.
set(CMAKE_C_COMPILER gcc)
set(CMAKE_CXX_COMPILER g++)
# -m32 starts CMAKE_<LANG>_FLAGS: flags of your own go into the per-type
# variables (CMAKE_CXX_FLAGS_RELEASE, ...) or are given with -m32 among them.
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT -m32)
set(CMAKE_EXE_LINKER_FLAGS_INIT -m32)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -m32)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -m32)

# Libraries are searched in /usr/lib32 (Debian's lib32z1-dev) and in the i386
# multiarch folders (/usr/lib/i386-linux-gnu), never in the 64-bit ones.
# Installing under /usr puts the libraries in lib/i386-linux-gnu.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
list(APPEND CMAKE_LIBRARY_PATH /usr/lib32)
