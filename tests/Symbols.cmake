# What the libraries export is compared with lists in the tree. Sanitizers and coverage add symbols of their own, and
# compilers differ in a few, so that the lists are those of the compiler that the packages are made with.
if(CMAKE_CXX_FLAGS MATCHES "sanitize|coverage" OR NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR WIN32)
    return()
endif()
get_property(libraries GLOBAL PROPERTY VNIFC_MODULES)
foreach(library IN ITEMS VnIfcCore vnifc ${libraries})
    add_test(NAME symbols.${library}
        COMMAND "${PROJECT_SOURCE_DIR}/scripts/symbols" "${PROJECT_BINARY_DIR}" ${library})
endforeach()

# A comparison that misses a symbol is none: the library without one of them is told.
add_test(NAME symbols.missing
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/symbols/missing.sh" "${PROJECT_SOURCE_DIR}" "${CMAKE_CXX_COMPILER}"
        "${CMAKE_CURRENT_BINARY_DIR}/missing_symbol")
