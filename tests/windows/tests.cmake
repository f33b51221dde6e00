# Checks of lumxml.dll itself, run on the build machine with MinGW's objdump.
find_program(LUMXML_OBJDUMP NAMES ${LUMXML_MINGW_TRIPLET}-objdump x86_64-w64-mingw32-objdump
             objdump REQUIRED)

add_test(NAME WindowsDll.ExportsExactlyTheImplementedLumFunctions
         COMMAND ${CMAKE_COMMAND} -DCHECK=exports "-DOBJDUMP=${LUMXML_OBJDUMP}"
                 "-DDLL=$<TARGET_FILE:lumxml>"
                 "-DEXPECTED=${CMAKE_CURRENT_SOURCE_DIR}/api/implemented_exports.txt"
                 -P ${CMAKE_CURRENT_SOURCE_DIR}/windows/dll_check.cmake)

# The C and C++ run-times are linked in statically, Xerces-C and ICU are
# static libraries: a host needs nothing but Windows itself.
add_test(NAME WindowsDll.ImportsOnlySystemLibraries
         COMMAND ${CMAKE_COMMAND} -DCHECK=imports "-DOBJDUMP=${LUMXML_OBJDUMP}"
                 "-DDLL=$<TARGET_FILE:lumxml>"
                 "-DALLOWED=KERNEL32.dll,ADVAPI32.dll,msvcrt.dll,WS2_32.dll,USER32.dll"
                 -P ${CMAKE_CURRENT_SOURCE_DIR}/windows/dll_check.cmake)

# host_init.cpp in the support library calls lumInitParser: a static
# library's references are resolved only by what follows it on the link
# line, so the DLL's import library must come after it (programs that never
# call an export import nothing from it).
target_link_libraries(lumxml_test_support INTERFACE lumxml)

# Some behaviour tests look into documents through Xerces-C's headers
# (dom_peek.h) without linking it; on Linux those headers are in the system
# include path, here they are in the Xerces-C build of the cache.
target_include_directories(lumxml_test_support SYSTEM INTERFACE ${XercesC_INCLUDE_DIRS})

# Paths built into the tests name Linux folders. Under Wine "/work/x" is
# "\work\x" on the current drive, which Xerces-C takes for a relative path;
# the same folder as a Windows path is "Z:/work/x" (Wine maps Z: to /).
foreach(target lumxml_internal lumxml_test_support)
  get_target_property(definitions ${target} INTERFACE_COMPILE_DEFINITIONS)
  list(TRANSFORM definitions REPLACE "^(LUMXML_[A-Z_]+_DIR)=\"/" "\\1=\"Z:/")
  set_target_properties(${target} PROPERTIES INTERFACE_COMPILE_DEFINITIONS "${definitions}")
endforeach()
