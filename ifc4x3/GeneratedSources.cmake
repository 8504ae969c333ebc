# Runs expgen during the build. Sets generated_dir, generated_sources and generated_headers.
set(generated_dir "${PROJECT_BINARY_DIR}/generated")
set(schema_dir "${PROJECT_SOURCE_DIR}/schemas/ifc4x3")
set(schema_file "${schema_dir}/declarations.exp")
set(enumerations_file "${schema_dir}/dictionary_enumerations.exp")
set(order_file "${schema_dir}/building_order.txt")

set(generated_sources Enumerations.cpp Selects_0.cpp Selects_1.cpp Dictionary.cpp)
foreach(n RANGE 100 115)
    string(SUBSTRING ${n} 1 2 digits)
    list(APPEND generated_sources Entities_${digits}.cpp)
endforeach()
list(TRANSFORM generated_sources PREPEND "${generated_dir}/src/")

# Every header is named as an output, so that a changed schema rebuilds exactly what includes a changed header, in the
# same run. Their names follow from the schema's text, before expgen is built.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${schema_file}")
file(STRINGS "${schema_file}" generated_headers REGEX "^(ENTITY [A-Za-z0-9]+|TYPE [A-Za-z0-9]+ = (ENUMERATION|SELECT))")
list(TRANSFORM generated_headers REPLACE "^(ENTITY|TYPE) ([A-Za-z0-9]+).*" "\\2.h")
list(APPEND generated_headers AllEntities.h AllTypes.h AttributeProperties.h)
list(TRANSFORM generated_headers PREPEND "${generated_dir}/include/IFC4X3/")

add_custom_command(
    OUTPUT ${generated_sources} ${generated_headers}
    COMMAND expgen --schema "${schema_file}" --enumerations "${enumerations_file}" --order "${order_file}"
            --out "${generated_dir}"
    DEPENDS expgen "${schema_file}" "${enumerations_file}" "${order_file}"
    COMMENT "Making the schema's classes"
    VERBATIM)

# A target of its own: as a mere part of the module, the run would wait until the module's libraries are linked.
add_custom_target(generated_sources DEPENDS ${generated_sources} ${generated_headers})
