# vnifc_for_python: the layer with its headers, either built here or taken from a build tree; and the installation of all
# libraries and of the tool.
add_library(vnifc_for_python INTERFACE)

if(VNIFC_BUILT_TREE)
    foreach(name IN ITEMS core typed vnifc)
        target_include_directories(vnifc_for_python INTERFACE "${vnifc_root}/${name}/include")
    endforeach()
    target_include_directories(vnifc_for_python INTERFACE "${VNIFC_BUILT_TREE}/generated/core/include")
    file(GLOB libraries "${VNIFC_BUILT_TREE}/lib*/libVnIfc*.so.*" "${VNIFC_BUILT_TREE}/lib*/libvnifc.so.*")
    # Under the names that programs and the core ask for, which have two numbers at most.
    list(FILTER libraries INCLUDE REGEX "\\.so\\.[0-9]+(\\.[0-9]+)?$")
    set(tool "${VNIFC_BUILT_TREE}/bin/vnifc")
    foreach(library IN LISTS libraries)
        if(library MATCHES "/lib(VnIfcCore|vnifc)\\.so\\.[0-9.]+$")
            target_link_libraries(vnifc_for_python INTERFACE "${library}")
        endif()
    endforeach()
    if(NOT EXISTS "${tool}")
        message(FATAL_ERROR "VNIFC_BUILT_TREE: there is no build of the whole project in ${VNIFC_BUILT_TREE}")
    endif()
else()
    # The stable names of the presets' release build.
    set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
    set(VNIFC_BUILD_TOOLS ON)
    add_subdirectory("${vnifc_root}" "${CMAKE_CURRENT_BINARY_DIR}/vnifc" EXCLUDE_FROM_ALL)
    get_property(modules GLOBAL PROPERTY VNIFC_MODULES)
    target_link_libraries(vnifc_for_python INTERFACE vnifc_layer VnIfcCore)
    add_custom_target(vnifc_package ALL DEPENDS vnifc vnifc_layer ${modules})
    foreach(target IN ITEMS VnIfcCore vnifc_layer ${modules})
        list(APPEND libraries "$<TARGET_SONAME_FILE:${target}>")
    endforeach()
    set(tool "$<TARGET_FILE:vnifc>")
endif()

install(PROGRAMS "${tool}" DESTINATION vnifc/bin COMPONENT python)

# What layer and tool take from the system goes along, but for what every system with a C++ program has.
install(CODE "
    set(libraries \"${libraries}\")
    file(GET_RUNTIME_DEPENDENCIES EXECUTABLES \"${tool}\" RESOLVED_DEPENDENCIES_VAR found
        PRE_EXCLUDE_REGEXES \"^lib(c|m|dl|rt|pthread|gcc_s|stdc\\\\+\\\\+)\\\\.so\" \"^ld-linux\" \"^lib(VnIfc|vnifc)\"
        POST_EXCLUDE_REGEXES \"/lib(VnIfc|vnifc)[^/]*$\")
    file(GET_RUNTIME_DEPENDENCIES LIBRARIES \${libraries} RESOLVED_DEPENDENCIES_VAR more
        PRE_EXCLUDE_REGEXES \"^lib(c|m|dl|rt|pthread|gcc_s|stdc\\\\+\\\\+)\\\\.so\" \"^ld-linux\" \"^lib(VnIfc|vnifc)\"
        POST_EXCLUDE_REGEXES \"/lib(VnIfc|vnifc)[^/]*$\")
    list(APPEND found \${more} \${libraries})
    list(REMOVE_DUPLICATES found)
    foreach(library IN LISTS found)
        get_filename_component(soname \"\${library}\" NAME)
        file(REAL_PATH \"\${library}\" real)
        file(INSTALL DESTINATION \"\${CMAKE_INSTALL_PREFIX}/vnifc/lib\" TYPE FILE FILES \"\${real}\" RENAME \"\${soname}\")
    endforeach()
" COMPONENT python)
