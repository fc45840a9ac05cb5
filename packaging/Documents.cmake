# Manuals, change log, copyright: the files that every Debian package has.

find_program(GZIP gzip REQUIRED)
set(packed_files)

# pack(<source> <name>): makes <name> in the build folder, compressed as Debian wants it, without the
# moment in it.
function(pack source name)
    set(result "${CMAKE_CURRENT_BINARY_DIR}/${name}")
    add_custom_command(
        OUTPUT "${result}"
        COMMAND sh -c "\"$1\" -9nc \"$2\" >\"$3\"" sh "${GZIP}" "${source}" "${result}"
        DEPENDS "${source}"
        VERBATIM)
    set(packed_files ${packed_files} "${result}" PARENT_SCOPE)
endfunction()

# The manuals bear version and day of the newest entry of the change log.
file(READ debian/changelog change_log)
string(REGEX MATCH "\\(([^)]*)\\)" change_log_version "${change_log}")
set(change_log_version "${CMAKE_MATCH_1}")
if(NOT change_log_version STREQUAL PROJECT_VERSION)
    message(FATAL_ERROR "packaging/debian/changelog begins with ${change_log_version}, "
        "the project is ${PROJECT_VERSION}")
endif()
string(REGEX MATCH "[0-9]+ [A-Z][a-z][a-z] [0-9][0-9][0-9][0-9] " change_log_day "${change_log}")
string(STRIP "${change_log_day}" change_log_day)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS debian/changelog)

function(install_manual component name)
    configure_file("man/${name}.1.in" "man/${name}.1" @ONLY)
    pack("${CMAKE_CURRENT_BINARY_DIR}/man/${name}.1" "man/${name}.1.gz")
    set(packed_files ${packed_files} PARENT_SCOPE)
    install(FILES "${CMAKE_CURRENT_BINARY_DIR}/man/${name}.1.gz" DESTINATION share/man/man1
        COMPONENT ${component})
endfunction()

install_manual(console norvane-sms)
install_link(console norvane-sms.1.gz share/man/man1/NorvaneSMS.1.gz)
install_manual(console norvane-sms-history)
install_link(console norvane-sms-history.1.gz share/man/man1/NorvaneHistory.1.gz)
install_manual(console NorvaneSheetReader)
install_manual(engine TovekSMService)
install_manual(simulator gsm-simulator)

# What both packages say of themselves.
pack("${CMAKE_CURRENT_SOURCE_DIR}/debian/changelog" changelog.gz)
foreach(component console simulator)
    set(package norvane-sms)
    if(component STREQUAL simulator)
        set(package norvane-sms-simulator)
    endif()
    install(FILES debian/copyright "${CMAKE_CURRENT_BINARY_DIR}/changelog.gz"
        DESTINATION share/doc/${package} COMPONENT ${component})
    install(FILES debian/${package}.lintian-overrides DESTINATION share/lintian/overrides
        RENAME ${package} COMPONENT ${component})
endforeach()
# The guides keep their places to each other, for their links and pictures.
install(FILES debian/README.Debian "${PROJECT_SOURCE_DIR}/README.md"
    DESTINATION share/doc/norvane-sms COMPONENT console)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION share/doc/norvane-sms COMPONENT console)

add_custom_target(norvane_documents ALL DEPENDS ${packed_files})
