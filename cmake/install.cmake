# What `cmake --install FOLDER [--prefix PREFIX] [--component NAME]` gives; the tree may be moved afterwards.
# Components: runtime for the television, development for applications, tools for people; all of them without a name.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/movo_net)
set(templates ${PROJECT_SOURCE_DIR}/cmake/install)
set(generated ${PROJECT_BINARY_DIR}/install)

# --- Libraries and headers ---

install(DIRECTORY movoglue/net/include/ platform/kest/include/ tools/movo_net_tools/include/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN *.h)

# movo_net::movo_net is the shared library, as for pkg-config without --static.
set_target_properties(movo_net_shared PROPERTIES EXPORT_NAME movo_net)
set_target_properties(movo_net PROPERTIES EXPORT_NAME movo_net_static)
install(TARGETS movo_net_shared movo_net kest movo_net_tools EXPORT movo_net
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT movo_net FILE movo_net-targets.cmake NAMESPACE movo_net:: DESTINATION ${package_folder}
    COMPONENT development)

configure_package_config_file(${templates}/movo_net-config.cmake.in ${generated}/movo_net-config.cmake
    INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${generated}/movo_net-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${generated}/movo_net-config.cmake ${generated}/movo_net-config-version.cmake
    DESTINATION ${package_folder} COMPONENT development)

# What a program that links the static library needs besides: other libraries of the product by their own link lists.
set(private_libraries -lkest)
get_target_property(linked movo_net LINK_LIBRARIES)
foreach(library IN LISTS linked)
    if(IS_ABSOLUTE ${library})
        list(APPEND private_libraries ${library})
    elseif(NOT TARGET ${library})
        list(APPEND private_libraries -l${library})
    endif()
endforeach()
list(JOIN private_libraries " " private_libraries)
file(RELATIVE_PATH prefix_from_pc ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${templates}/movo_net.pc.in ${generated}/movo_net.pc @ONLY)
configure_file(${templates}/movo_net_tools.pc.in ${generated}/movo_net_tools.pc @ONLY)
install(FILES ${generated}/movo_net.pc ${generated}/movo_net_tools.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# --- Programs ---

install(TARGETS recovery_net COMPONENT runtime)
install(FILES man/recovery_net.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT runtime)
install(TARGETS movo_net_shell COMPONENT tools)
install(PROGRAMS tools/movo_net_fake_supplicant/movo_net_fake_supplicant
    DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES tools/movo_net_fake_supplicant/home.script tools/movo_net_fake_supplicant/vanishing.script
    DESTINATION ${CMAKE_INSTALL_DATADIR}/movo_net COMPONENT tools)
install(DIRECTORY tools/movo_net_fake_supplicant/fake_supplicant
    DESTINATION ${CMAKE_INSTALL_DATADIR}/movo_net COMPONENT tools FILES_MATCHING PATTERN *.py)
install(FILES man/movo_net_shell.1 man/movo_net_fake_supplicant.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)

# Names the daemon's place, which is known when it is installed.
install(CODE "
    set(bin_folder \${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR})
    configure_file(${templates}/recovery_net.service.in ${generated}/recovery_net.service @ONLY)"
    COMPONENT runtime)
install(FILES ${generated}/recovery_net.service DESTINATION lib/systemd/system COMPONENT runtime)
