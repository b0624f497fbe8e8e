# CPack writes maintainer scripts that call ldconfig, which is the trigger's work: they are taken out again.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(unpacked "${package}.unpacked")
    file(REMOVE_RECURSE "${unpacked}")
    execute_process(COMMAND dpkg-deb -R "${package}" "${unpacked}" COMMAND_ERROR_IS_FATAL ANY)
    if(EXISTS "${unpacked}/DEBIAN/postinst")
        file(REMOVE "${unpacked}/DEBIAN/postinst" "${unpacked}/DEBIAN/postrm")
        execute_process(COMMAND dpkg-deb --root-owner-group -Zxz -b "${unpacked}" "${package}"
            OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    endif()
    file(REMOVE_RECURSE "${unpacked}")
endforeach()
