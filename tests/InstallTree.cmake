# The install tree is tested as a user meets it: installed afresh, found by find_package from a project outside the
# tree, and used by the installed tool.
if(NOT TARGET VnIfc4x3Add2 OR NOT TARGET build_house OR NOT TARGET vnifc)
    return()
endif()

set(prefix "${CMAKE_CURRENT_BINARY_DIR}/prefix")
set(consumer_dir "${CMAKE_CURRENT_BINARY_DIR}/consumer")
set(house "${CMAKE_CURRENT_BINARY_DIR}/consumer.ifc")

# Leftovers of an earlier run would hide a file that is no longer installed.
add_test(NAME install.clean COMMAND ${CMAKE_COMMAND} -E rm -rf "${prefix}" "${consumer_dir}" "${house}"
    "${CMAKE_CURRENT_BINARY_DIR}/bare" "${CMAKE_CURRENT_BINARY_DIR}/components"
    "${CMAKE_CURRENT_BINARY_DIR}/unknown_component" "${CMAKE_CURRENT_BINARY_DIR}/other_version")
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

# What find_package gives is told by a program of each library; components that are not there are refused by name.
set(consumers "${CMAKE_CURRENT_SOURCE_DIR}/consumers")
set(consumer_options "-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}" "-DCMAKE_CXX_FLAGS=${CMAKE_CXX_FLAGS}")
add_test(NAME install.components
    COMMAND ${CMAKE_CTEST_COMMAND}
        --build-and-test "${consumers}/components" "${CMAKE_CURRENT_BINARY_DIR}/components"
        --build-generator "${CMAKE_GENERATOR}"
        --build-options "-DCMAKE_PREFIX_PATH=${prefix}" ${consumer_options} "-DVERSION=${VNIFC_SOVERSION}"
        --test-command version)
set_tests_properties(install.components PROPERTIES FIXTURES_REQUIRED installed)

add_test(NAME install.unknown_component
    COMMAND ${CMAKE_COMMAND} -S "${consumers}/components" -B "${CMAKE_CURRENT_BINARY_DIR}/unknown_component"
        -G "${CMAKE_GENERATOR}" "-DCMAKE_PREFIX_PATH=${prefix}" ${consumer_options} "-DVERSION=${VNIFC_SOVERSION}"
        -DMORE=Nonsense)
set_tests_properties(install.unknown_component PROPERTIES FIXTURES_REQUIRED installed
    PASS_REGULAR_EXPRESSION "expected some of core, vnifc.*ifc4x3_add2.*found[ \n]+Nonsense")

add_test(NAME install.other_version
    COMMAND ${CMAKE_COMMAND} -S "${consumers}/components" -B "${CMAKE_CURRENT_BINARY_DIR}/other_version"
        -G "${CMAKE_GENERATOR}" "-DCMAKE_PREFIX_PATH=${prefix}" ${consumer_options} -DVERSION=0.99)
set_tests_properties(install.other_version PROPERTIES FIXTURES_REQUIRED installed
    PASS_REGULAR_EXPRESSION "vnifcConfig.cmake, version: ${PROJECT_VERSION}")

find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
    add_test(NAME install.pkg_config
        COMMAND "${consumers}/pkg_config.sh" "${PKG_CONFIG}" "${CMAKE_CXX_COMPILER} ${CMAKE_CXX_FLAGS}" "${prefix}"
            "${CMAKE_INSTALL_LIBDIR}" "${consumers}/components/version.cpp" "${PROJECT_VERSION}")
    set_tests_properties(install.pkg_config PROPERTIES FIXTURES_REQUIRED installed)
endif()

# As part of another project, which keeps its own settings. Only the configuration is tried: the rest would be the
# whole build again.
add_test(NAME install.subdirectory
    COMMAND ${CMAKE_COMMAND} --fresh -S "${consumers}/subdirectory" -B "${CMAKE_CURRENT_BINARY_DIR}/subdirectory"
        -G "${CMAKE_GENERATOR}" "-DVNIFC_SOURCE=${PROJECT_SOURCE_DIR}" ${consumer_options}
        -DVNIFC_SCHEMAS=IFC4X3_ADD2)

# Without what only compilers need, the modules are found all the same.
set(bare "${CMAKE_CURRENT_BINARY_DIR}/bare")
add_test(NAME install.bare COMMAND ${CMAKE_COMMAND} -E copy_directory "${prefix}" "${bare}")
set_tests_properties(install.bare PROPERTIES FIXTURES_REQUIRED installed FIXTURES_SETUP copied)
add_test(NAME install.bare_without_links
    COMMAND find "${bare}/${CMAKE_INSTALL_LIBDIR}" -name "*.so" -delete)
set_tests_properties(install.bare_without_links PROPERTIES FIXTURES_REQUIRED copied FIXTURES_SETUP bare)

# Every release that was built is found where the tool was installed.
get_property(releases GLOBAL PROPERTY VNIFC_BUILT_RELEASES)
list(TRANSFORM releases APPEND " +not ")
foreach(tree IN ITEMS prefix bare)
    add_test(NAME install.releases_${tree} COMMAND "${${tree}}/${CMAKE_INSTALL_BINDIR}/vnifc" --version)
    set_tests_properties(install.releases_${tree} PROPERTIES FAIL_REGULAR_EXPRESSION "${releases}")
endforeach()
set_tests_properties(install.releases_prefix PROPERTIES FIXTURES_REQUIRED installed)
set_tests_properties(install.releases_bare PROPERTIES FIXTURES_REQUIRED bare)

# Man pages and completion, as installed.
foreach(shell IN ITEMS bash zsh fish)
    add_test(NAME install.completion_${shell}
        COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/completion/complete.sh" ${shell} "${prefix}")
    set_tests_properties(install.completion_${shell} PROPERTIES FIXTURES_REQUIRED installed SKIP_RETURN_CODE 77)
endforeach()
add_test(NAME install.man
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/completion/manual.sh" "${prefix}/${CMAKE_INSTALL_BINDIR}/vnifc" "${prefix}")
set_tests_properties(install.man PROPERTIES FIXTURES_REQUIRED installed SKIP_RETURN_CODE 77)
