# Windows (MinGW-w64 cross build, see tools/windows/build.sh): Xerces-C and
# ICU are static libraries there, so lumxml.dll carries them inside and
# imports only system DLLs.

# Xerces-C's own CMake package names these targets without finding them.
find_package(Threads REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc data)
# ICU's common library reads its converter tables from the static data
# library, so the data library must follow it on every link line.
set_property(TARGET ICU::uc APPEND PROPERTY INTERFACE_LINK_LIBRARIES ICU::data)
# Its package (with the ICU link) rather than CMake's FindXercesC module.
set(CMAKE_FIND_PACKAGE_PREFER_CONFIG ON)
# ICU's headers declare dllimport unless told the library is static.
add_compile_definitions(U_STATIC_IMPLEMENTATION)

# lumxml.dll, lumxml-host.exe and every test executable in one folder, so
# that Windows finds the DLL beside the programs that load it.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

# Test discovery runs the test programs (under Wine): do it when ctest runs,
# where tools/windows/test.sh has Wine ready, not at build time.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)

# A release lumxml.dll carries no symbol tables (9 MB instead of 12 MB);
# its exports are unaffected.
string(APPEND CMAKE_SHARED_LINKER_FLAGS_RELEASE " -s")

# Programs get the 8 MB main-thread stack of Linux instead of Windows' 1 MB:
# Xerces-C recurses once per element level when it releases a document, and
# the tests load documents a hundred thousand levels deep. (A Windows host
# loading such documents needs as large a stack on its calling thread.)
string(APPEND CMAKE_EXE_LINKER_FLAGS " -Wl,--stack,8388608")
