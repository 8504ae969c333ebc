# vnifc_install_library(TARGET COMPONENT EXPORT_SET) installs a library: what programs need while they run is of
# COMPONENT, what they are compiled with is of the component devel. vnifc_install_pkgconfig(NAME LIBRARY DESCRIPTION
# REQUIRES) installs NAME.pc for it.
set(vnifc_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/vnifc")

function(vnifc_install_library target component export_set)
    if(NOT VNIFC_INSTALL)
        return()
    endif()
    install(TARGETS ${target} EXPORT ${export_set}
        RUNTIME COMPONENT ${component}
        LIBRARY COMPONENT ${component} NAMELINK_COMPONENT devel
        ARCHIVE COMPONENT devel)
endfunction()

function(vnifc_install_pkgconfig name library description requires)
    if(NOT VNIFC_INSTALL)
        return()
    endif()
    # Relative, so that the tree can be moved.
    file(RELATIVE_PATH prefix "/root/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/root")
    string(REGEX REPLACE "/$" "" prefix "${prefix}")
    set(file "${PROJECT_BINARY_DIR}/pkgconfig/${name}.pc")
    file(CONFIGURE OUTPUT "${file}" @ONLY CONTENT [[
prefix=${pcfiledir}/@prefix@
libdir=${prefix}/@CMAKE_INSTALL_LIBDIR@
includedir=${prefix}/@CMAKE_INSTALL_INCLUDEDIR@

Name: @name@
Description: @description@
Version: @PROJECT_VERSION@
Requires: @requires@
Cflags: -I${includedir}
Libs: -L${libdir} -l@library@
]])
    install(FILES "${file}" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT devel)
endfunction()
