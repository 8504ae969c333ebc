# vnifc_add_release(DIRECTORY) adds the schema module of the release whose declarations and facts are in
# schemas/DIRECTORY: expgen makes its classes during the build, and they are compiled into a shared library of the name
# that its release.txt gives. vnifc_add_release(DIRECTORY FROM PATH) takes them from elsewhere; with NO_INSTALL the
# module is for the build tree alone.

# The value of a keyword of a release.txt.
function(vnifc_release_fact facts keyword result)
    file(STRINGS "${facts}" line REGEX "^${keyword} ")
    string(REGEX REPLACE "^${keyword} +" "" value "${line}")
    set(${result} "${value}" PARENT_SCOPE)
endfunction()

# expgen divides the classes among this many sources.
set(vnifc_entity_units 16)
set(vnifc_select_units 2)

function(vnifc_set_module_options target)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # A unique symbol would keep the module in memory for ever.
        target_compile_options(${target} PRIVATE -fno-gnu-unique)
    endif()
    # The classes have single, non-virtual bases only, for which every compiler gives the true offset.
    target_compile_options(${target} PRIVATE -Wno-invalid-offsetof)
    # Tables, constructors and destructors: more than -O1 costs a third of the time to build and gains nothing.
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()

# The headers that all modules begin with, compiled once for all of them.
function(vnifc_add_module_headers)
    if(TARGET vnifc_module_headers)
        return()
    endif()
    file(CONFIGURE OUTPUT module_headers.cpp CONTENT "")
    add_library(vnifc_module_headers OBJECT "${CMAKE_CURRENT_BINARY_DIR}/module_headers.cpp")
    set_target_properties(vnifc_module_headers PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_include_directories(vnifc_module_headers PRIVATE "${PROJECT_SOURCE_DIR}/typed/src")
    target_link_libraries(vnifc_module_headers PRIVATE VnIfcCore)
    vnifc_set_module_options(vnifc_module_headers)
    target_precompile_headers(vnifc_module_headers PRIVATE <entities/EntityTables.h> <types/Descriptors.h>)
endfunction()

function(vnifc_add_release directory)
    cmake_parse_arguments(PARSE_ARGV 1 release NO_INSTALL FROM "")
    if(NOT release_FROM)
        set(release_FROM "${PROJECT_SOURCE_DIR}/schemas/${directory}")
    endif()
    set(facts "${release_FROM}/release.txt")
    set(declarations "${release_FROM}/declarations.exp")
    vnifc_release_fact("${facts}" name name)
    vnifc_release_fact("${facts}" module module)
    file(GLOB inputs CONFIGURE_DEPENDS "${release_FROM}/*")
    set(generated "${PROJECT_BINARY_DIR}/generated/${directory}")

    set(sources Enumerations.cpp Dictionary.cpp Module.cpp)
    math(EXPR last "${vnifc_select_units} - 1")
    foreach(n RANGE ${last})
        list(APPEND sources Selects_${n}.cpp)
    endforeach()
    math(EXPR last "100 + ${vnifc_entity_units} - 1")
    foreach(n RANGE 100 ${last})
        string(SUBSTRING ${n} 1 2 digits)
        list(APPEND sources Entities_${digits}.cpp)
    endforeach()
    list(TRANSFORM sources PREPEND "${generated}/src/")
    # Only the classes of entities have names of their own for all that a source keeps to itself.
    set(alone ${sources})
    list(FILTER alone EXCLUDE REGEX "/Entities_")
    set_source_files_properties(${alone} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)

    # Every header is named as an output, so that a changed schema rebuilds exactly what includes a changed header, in
    # the same run. Their names follow from the schema's text, before expgen is built.
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${declarations}" "${facts}")
    file(STRINGS "${declarations}" headers REGEX "^(ENTITY [A-Za-z0-9]+|TYPE [A-Za-z0-9]+ = (ENUMERATION|SELECT))")
    list(TRANSFORM headers REPLACE "^(ENTITY|TYPE) ([A-Za-z0-9]+).*" "\\2.h")
    list(APPEND headers AllEntities.h AllTypes.h AttributeProperties.h Module.h Release.h)
    list(TRANSFORM headers PREPEND "${generated}/include/${name}/")

    add_custom_command(
        OUTPUT ${sources} ${headers}
        COMMAND expgen classes "${release_FROM}" "${generated}"
        DEPENDS expgen ${inputs}
        COMMENT "Making the classes of ${name}"
        VERBATIM)
    # A target of its own: as a mere part of the module, the run would wait until the module's libraries are linked.
    add_custom_target(${module}_sources DEPENDS ${sources} ${headers})

    add_library(${module} SHARED ${sources})
    add_library(vnifc::${module} ALIAS ${module})
    set_target_properties(${module} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${VNIFC_SOVERSION}
        UNITY_BUILD_BATCH_SIZE 4 DEFINE_SYMBOL "")
    target_include_directories(${module}
        PUBLIC
            $<BUILD_INTERFACE:${generated}/include>
            $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
        PRIVATE "${PROJECT_SOURCE_DIR}/typed/src")
    target_link_libraries(${module} PUBLIC VnIfcCore)
    vnifc_set_module_options(${module})
    vnifc_add_module_headers()
    target_precompile_headers(${module} REUSE_FROM vnifc_module_headers)
    add_dependencies(${module} ${module}_sources)

    if(release_NO_INSTALL)
        return()
    endif()
    vnifc_release_fact("${facts}" title title)
    vnifc_install_library(${module} ${directory} vnifc_${directory}Targets)
    vnifc_install_pkgconfig(vnifc-${directory} ${module} "Classes of ${title}" "vnifc-core")
    if(VNIFC_INSTALL)
        install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${name} COMPONENT devel)
        install(EXPORT vnifc_${directory}Targets NAMESPACE vnifc:: DESTINATION ${vnifc_package_dir} COMPONENT devel)
        set_property(GLOBAL APPEND PROPERTY VNIFC_INSTALLED_RELEASES ${directory})
    endif()
    set_property(GLOBAL APPEND PROPERTY VNIFC_MODULES ${module})
    set_property(GLOBAL APPEND PROPERTY VNIFC_BUILT_RELEASES ${name})
endfunction()
