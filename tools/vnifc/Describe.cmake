# Man pages and completion, written by the tool itself and installed where each system looks for them. A tool for another
# machine may not run here.
if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    return()
endif()

set(described "${PROJECT_BINARY_DIR}/described")
add_custom_command(OUTPUT "${described}/vnifc.1"
    COMMAND ${CMAKE_COMMAND} -E rm -rf "${described}"
    # A tool for the system's folders does not find the libraries of the build tree by itself.
    COMMAND ${CMAKE_COMMAND} -E env "LD_LIBRARY_PATH=$<TARGET_FILE_DIR:VnIfcCore>"
        $<TARGET_FILE:vnifc> describe-commands "${described}"
    DEPENDS vnifc
    COMMENT "Writing man pages and completion"
    VERBATIM)
# Systems keep their pages compressed; without the time, so that each build gives the same.
find_program(GZIP gzip REQUIRED)
add_custom_command(OUTPUT "${described}/vnifc.1.gz"
    COMMAND sh -c "${GZIP} -9nkf *.1"
    WORKING_DIRECTORY "${described}"
    DEPENDS "${described}/vnifc.1"
    VERBATIM)
add_custom_target(vnifc_described ALL DEPENDS "${described}/vnifc.1.gz")

install(DIRECTORY "${described}/" DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool FILES_MATCHING PATTERN "*.1.gz")
install(FILES "${described}/vnifc" DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
install(FILES "${described}/_vnifc" DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tool)
install(FILES "${described}/vnifc.fish" DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tool)
