# The Debian packages. Target package_checked builds them and checks what came out.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME norvane-sms)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
# Each package has a summary of its own, in the first line of its description.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGE_CONTACT "Norvane <soporte@norvane.example>")
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/packages")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/StripPrograms.cmake")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL engine console simulator)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION comm)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://soporte.norvane.example")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Engine and console are one package: a client's machine is made a server by a click.
set(CPACK_DEBIAN_MAIN_PACKAGE_NAME norvane-sms)
set(CPACK_DEBIAN_MAIN_DESCRIPTION "console and engine that send SMS through a GSM device
An operator writes a message, gives a number and a delivery date and time, and
queues it; or has it sent to each recipient of a text file or spreadsheet. The
engine, a process of its own, owns the device and keeps the queue. A second
window shows what became of every message and what was answered.

One machine has the device and is the server. The others are clients, which
hand their messages over in a shared folder; it is to be chosen after the
installation, see README.Debian.")
# Beside the libraries: the database driver, the toolkit's own texts, the console's font.
set(CPACK_DEBIAN_MAIN_PACKAGE_DEPENDS "libqt6sql6-sqlite, qt6-translations-l10n, \
fonts-liberation2 | fonts-liberation, default-dbus-session-bus | dbus-session-bus")
# What tells the operator that a queue folder is to be chosen, and what owns the devices that no
# port is spoken to.
set(CPACK_DEBIAN_MAIN_PACKAGE_RECOMMENDS "libnotify-bin, modemmanager")
set(CPACK_DEBIAN_MAIN_PACKAGE_SUGGESTS norvane-sms-simulator)
configure_file(debian/prerm.in debian/prerm @ONLY
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
        WORLD_EXECUTE)
set(CPACK_DEBIAN_MAIN_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_BINARY_DIR}/debian/prerm")

set(CPACK_DEBIAN_SIMULATOR_PACKAGE_NAME norvane-sms-simulator)
set(CPACK_DEBIAN_SIMULATOR_DESCRIPTION "simulated GSM modem on a pseudo-terminal
Answers AT commands as a GSM modem does and notes the messages that it is
given, for trying out Norvane SMS without a device. Nothing is sent anywhere.")
set(CPACK_DEBIAN_SIMULATOR_PACKAGE_ENHANCES norvane-sms)

include(CPack)
cpack_add_component_group(main)
cpack_add_component(engine GROUP main)
cpack_add_component(console GROUP main)
cpack_add_component(simulator)

add_custom_target(package_checked
    COMMAND "${CMAKE_COMMAND}" -E rm -rf "${CPACK_PACKAGE_DIRECTORY}"
    COMMAND "${CMAKE_CPACK_COMMAND}" --config "${CMAKE_BINARY_DIR}/CPackConfig.cmake"
    COMMAND "${PROJECT_SOURCE_DIR}/tests/package/check_packages.sh" "${CPACK_PACKAGE_DIRECTORY}"
        "${CMAKE_CXX_FLAGS}"
    DEPENDS NorvaneSMS NorvaneHistory NorvaneSheetReader TovekSMService gsm-simulator
        norvane_icons norvane_documents
    WORKING_DIRECTORY "${CMAKE_BINARY_DIR}"
    USES_TERMINAL
    VERBATIM)
