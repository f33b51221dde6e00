# Cross-compiling lumxml.dll for 64-bit Windows with Debian's MinGW-w64
# (posix thread model, for std::thread/std::mutex/std::call_once).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(LUMXML_MINGW_TRIPLET x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${LUMXML_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${LUMXML_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${LUMXML_MINGW_TRIPLET}-windres)
set(CMAKE_AR ${LUMXML_MINGW_TRIPLET}-gcc-ar-posix CACHE FILEPATH "")
set(CMAKE_RANLIB ${LUMXML_MINGW_TRIPLET}-gcc-ranlib-posix CACHE FILEPATH "")

# Headers and libraries of the target only; programs of the build machine.
set(CMAKE_FIND_ROOT_PATH /usr/${LUMXML_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Every binary carries its own C and C++ run-time, so lumxml.dll (and the
# tests) import only system DLLs: nothing from MinGW has to be shipped.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# Tests and discovery run the .exe files under Wine.
if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
  find_program(LUMXML_WINE64 NAMES wine64 PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
  if(LUMXML_WINE64)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${LUMXML_WINE64})
  endif()
endif()
