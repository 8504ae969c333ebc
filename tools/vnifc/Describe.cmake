# Man pages and completion, written by the tool itself and installed where each system looks for them. A tool for another
# machine may not run here.
if(CMAKE_CROSSCOMPILING AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
    return()
endif()

set(described "${PROJECT_BINARY_DIR}/described")
add_custom_command(OUTPUT "${described}/vnifc.1"
    COMMAND ${CMAKE_COMMAND} -E rm -rf "${described}"
    COMMAND vnifc describe-commands "${described}"
    DEPENDS vnifc
    COMMENT "Writing man pages and completion"
    VERBATIM)
add_custom_target(vnifc_described ALL DEPENDS "${described}/vnifc.1")

install(DIRECTORY "${described}/" DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool FILES_MATCHING PATTERN "*.1")
install(FILES "${described}/vnifc" DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tool)
install(FILES "${described}/_vnifc" DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tool)
install(FILES "${described}/vnifc.fish" DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tool)
