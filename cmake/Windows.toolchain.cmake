# Cross-builds for 64-bit Windows with Debian's mingw-w64, everything linked into the program.
# VANTREL_WINDOWS_PREFIX names the folders with the libraries that scripts/build-windows makes.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(tools x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${tools}-gcc-posix)
set(CMAKE_CXX_COMPILER ${tools}-g++-posix)
set(CMAKE_RC_COMPILER ${tools}-windres)
set(CMAKE_AR ${tools}-gcc-ar-posix CACHE FILEPATH "")
set(CMAKE_RANLIB ${tools}-gcc-ranlib-posix CACHE FILEPATH "")

# Nested configurations, such as those of compiler checks, need it too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VANTREL_WINDOWS_PREFIX)
set(CMAKE_FIND_ROOT_PATH /usr/${tools} ${VANTREL_WINDOWS_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)
