# Before a package is made of a folder: takes what Debian's own tools take out of its programs. CPack's
# own stripping leaves the compiler's remarks in.
find_program(STRIP strip REQUIRED)
file(GLOB_RECURSE programs "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/NorvaneSMS"
    "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/NorvaneHistory"
    "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/NorvaneSheetReader"
    "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/TovekSMService"
    "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/gsm-simulator")
foreach(program IN LISTS programs)
    if(NOT IS_SYMLINK "${program}")
        execute_process(
            COMMAND "${STRIP}" --remove-section=.comment --remove-section=.note "${program}"
            COMMAND_ERROR_IS_FATAL ANY)
    endif()
endforeach()
