# The install tree is tested as a user meets it: installed afresh, found by find_package from a project outside the
# tree, and used by the installed tool.
if(NOT TARGET VnIfc4x3Add2 OR NOT TARGET build_house OR NOT TARGET vnifc)
    return()
endif()

set(prefix "${CMAKE_CURRENT_BINARY_DIR}/prefix")
set(consumer_dir "${CMAKE_CURRENT_BINARY_DIR}/consumer")
set(house "${CMAKE_CURRENT_BINARY_DIR}/consumer.ifc")

# Leftovers of an earlier run would hide a file that is no longer installed.
add_test(NAME install.clean COMMAND ${CMAKE_COMMAND} -E rm -rf "${prefix}" "${consumer_dir}" "${house}")
set_tests_properties(install.clean PROPERTIES FIXTURES_SETUP clean_prefix)

add_test(NAME install.prefix COMMAND ${CMAKE_COMMAND} --install "${PROJECT_BINARY_DIR}" --prefix "${prefix}")
set_tests_properties(install.prefix PROPERTIES FIXTURES_REQUIRED clean_prefix FIXTURES_SETUP installed)

add_test(NAME install.consumer
    COMMAND ${CMAKE_CTEST_COMMAND}
        --build-and-test "${PROJECT_SOURCE_DIR}/examples/consumer" "${consumer_dir}"
        --build-generator "${CMAKE_GENERATOR}"
        --build-options "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}"
                        "-DCMAKE_CXX_FLAGS=${CMAKE_CXX_FLAGS}"
        --test-command consumer "${house}")
set_tests_properties(install.consumer PROPERTIES FIXTURES_REQUIRED installed FIXTURES_SETUP installed_house)

add_test(NAME install.tool COMMAND "${prefix}/${CMAKE_INSTALL_BINDIR}/vnifc" info "${house}")
set_tests_properties(install.tool PROPERTIES FIXTURES_REQUIRED "installed;installed_house")

# Every release that was built is found where the tool was installed.
get_property(releases GLOBAL PROPERTY VNIFC_BUILT_RELEASES)
list(TRANSFORM releases APPEND " +not installed")
add_test(NAME install.releases COMMAND "${prefix}/${CMAKE_INSTALL_BINDIR}/vnifc" --version)
set_tests_properties(install.releases PROPERTIES FIXTURES_REQUIRED installed FAIL_REGULAR_EXPRESSION "${releases}")
