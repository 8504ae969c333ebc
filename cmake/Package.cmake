# find_package(vnifc) gives vnifc::VnIfcCore, vnifc::vnifc and a target for each release that was built,
# vnifc::VnIfc4x3Add2 and so on. The libraries need nothing from others in public.
include(CMakePackageConfigHelpers)

write_basic_package_version_file("${PROJECT_BINARY_DIR}/vnifcConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(EXPORT vnifcTargets NAMESPACE vnifc:: DESTINATION ${vnifc_package_dir} COMPONENT devel)
configure_file("${PROJECT_SOURCE_DIR}/cmake/vnifcConfig.cmake.in" "${PROJECT_BINARY_DIR}/vnifcConfig.cmake" COPYONLY)
install(FILES "${PROJECT_BINARY_DIR}/vnifcConfig.cmake" "${PROJECT_BINARY_DIR}/vnifcConfigVersion.cmake"
    DESTINATION ${vnifc_package_dir} COMPONENT devel)
install(FILES LICENSE NOTICE README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
file(GLOB guides CONFIGURE_DEPENDS docs/*.md)
install(FILES ${guides} DESTINATION ${CMAKE_INSTALL_DOCDIR}/docs COMPONENT doc)

# cpack: a package for each component, and a tarball with all of them (scripts/package).
if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()
set(CPACK_PACKAGE_NAME vnifc)
set(CPACK_PACKAGE_VENDOR "vnifc")
set(CPACK_PACKAGE_CONTACT "The developers of vnifc <vnifc@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENTS_ALL runtime devel tool doc)

# vnifc_deb(COMPONENT PACKAGE SECTION SUMMARY DEPENDS TEXT): with what every package of Debian has, its changes and its
# licence.
function(vnifc_deb component package section summary depends text)
    string(TOUPPER ${component} name)
    set(values PACKAGE_NAME "${package}" PACKAGE_SECTION "${section}" PACKAGE_DEPENDS "${depends}"
        DESCRIPTION "${summary}\n${text}")
    while(values)
        list(POP_FRONT values key value)
        set(CPACK_DEBIAN_${name}_${key} "${value}" PARENT_SCOPE)
    endwhile()
    foreach(file IN ITEMS copyright changelog.Debian.gz)
        install(FILES "${PROJECT_BINARY_DIR}/debian/${file}" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package}"
            COMPONENT ${component} OPTIONAL)
    endforeach()
endfunction()

set(runtime_package "libvnifc${VNIFC_SOVERSION}")
set(same_runtime "${runtime_package} (= ${PROJECT_VERSION})")
set(modules "")
foreach(directory IN LISTS VNIFC_RELEASES)
    get_property(installed GLOBAL PROPERTY VNIFC_INSTALLED_RELEASES)
    if(NOT directory IN_LIST installed)
        continue()
    endif()
    vnifc_release_fact("${PROJECT_SOURCE_DIR}/schemas/${directory}/release.txt" title title)
    vnifc_release_fact("${PROJECT_SOURCE_DIR}/schemas/${directory}/release.txt" package package)
    vnifc_deb(${directory} ${package} libs "classes of ${title} for vnifc" "${same_runtime}"
        "The module that reads and writes IFC files of this release of the schema.")
    list(APPEND CPACK_COMPONENTS_ALL ${directory})
    list(APPEND modules "${package} (= ${PROJECT_VERSION})")
endforeach()
list(JOIN modules ", " modules)
vnifc_deb(runtime ${runtime_package} libs "libraries for files of IFC (ISO 16739)" ""
    "Reads, queries, changes, checks and writes IFC models. The classes of each\nrelease of the schema are in a package of their own.")
vnifc_deb(devel libvnifc-dev libdevel "headers of vnifc for files of IFC (ISO 16739)" "${same_runtime}, ${modules}"
    "Headers, and what CMake and pkg-config need to find the libraries.")
vnifc_deb(tool vnifc utils "command-line tool for files of IFC (ISO 16739)" "${same_runtime}"
    "Shows, queries, checks, changes, converts and exports IFC models.")
vnifc_deb(doc vnifc-doc doc "guide to vnifc" "" "The guide to the libraries and to the command-line tool.")
# What has libraries lets the loader's cache be made anew.
get_property(installed GLOBAL PROPERTY VNIFC_INSTALLED_RELEASES)
foreach(component IN ITEMS runtime ${installed})
    string(TOUPPER ${component} name)
    set(CPACK_DEBIAN_${name}_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/triggers")
endforeach()
set(CPACK_DEBIAN_TOOL_PACKAGE_RECOMMENDS "vnifc-ifc2x3, vnifc-ifc4, vnifc-ifc4x3-add2")
set(CPACK_DEBIAN_DOC_PACKAGE_ARCHITECTURE all)
include(CPack)
