# The pages of the manual: pages of the docs, with what the programs and the installed files say themselves.
find_program(OZ_LOWDOWN lowdown)
if(NOT OZ_LOWDOWN)
    message(STATUS "The manual is not built: lowdown is not there")
    return()
endif()
set(OZ_MANUAL_DIR ${PROJECT_BINARY_DIR}/manual)
file(MAKE_DIRECTORY ${OZ_MANUAL_DIR})
add_custom_target(ozdevice_manual ALL)

# oz_manual_page(NAME SECTION DOCS_PAGE SUMMARY [TITLE FILE]...): a page, which shows each FILE under TITLE.
function(oz_manual_page name section markdown summary)
    set(page ${OZ_MANUAL_DIR}/${name}.${section})
    set(files ${ARGN})
    list(FILTER files INCLUDE REGEX /)
    add_custom_command(OUTPUT ${page} VERBATIM
        COMMAND ${PROJECT_SOURCE_DIR}/cmake/manual-page ${name} ${section} ${summary}
            ${PROJECT_SOURCE_DIR}/docs/${markdown} ${ARGN} > ${page}
        DEPENDS ${PROJECT_SOURCE_DIR}/cmake/manual-page ${PROJECT_SOURCE_DIR}/docs/${markdown} ${files})
    add_custom_target(manual_${name} DEPENDS ${page})
    add_dependencies(ozdevice_manual manual_${name})
    install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endfunction()

# oz_said_by(OUTPUT TARGET WORD...): the file OUTPUT holds what a program prints.
function(oz_said_by output target)
    add_custom_command(OUTPUT ${output} DEPENDS ${target} VERBATIM
        COMMAND ${target} ${ARGN} > ${output})
endfunction()
oz_said_by(${OZ_MANUAL_DIR}/command-help ozdevice_command --help-all)
oz_said_by(${OZ_MANUAL_DIR}/daemon-help ozdeviced --help)
oz_said_by(${OZ_MANUAL_DIR}/daemon-sources ozdeviced --list-sources)

oz_manual_page(ozdevice 1 command.md "looks at a phone's hardware and radios, and simulates them"
    OPTIONS ${OZ_MANUAL_DIR}/command-help)
if(OZ_BUILD_QML)
    oz_manual_page(ozdevice-panel 1 panel.md "shows a phone, and tells a simulated one what to do")
endif()
if(OZ_BUILD_CAST)
    oz_said_by(${OZ_MANUAL_DIR}/cast-help ozcast --help)
    oz_manual_page(ozcast 1 cast.md "shows the screen on a wireless display"
        OPTIONS ${OZ_MANUAL_DIR}/cast-help)
endif()
oz_manual_page(ozdeviced 8 daemon.md "publishes a device's hardware and radios, or a simulated phone's"
    OPTIONS ${OZ_MANUAL_DIR}/daemon-help)
oz_manual_page(ozdeviced.conf 5 configuration.md "which source feeds which facility"
    SOURCES ${OZ_MANUAL_DIR}/daemon-sources
    "THE INSTALLED FILE" ${PROJECT_SOURCE_DIR}/services/data/ozdeviced.conf)
oz_manual_page(ozdevice-phone 5 phone.md "what the simulated phone is when it starts"
    "THE DEFAULT PHONE" ${PROJECT_SOURCE_DIR}/services/data/phone.json)
oz_manual_page(ozdevice-scenario 5 scenarios.md "what happens to the simulated phone")
