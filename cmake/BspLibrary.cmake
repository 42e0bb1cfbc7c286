# libbsp.so, libbsp.a, and what an installed tree needs to be used.

add_library(bsp_objects OBJECT
  chassis/clock.cpp
  chassis/control.cpp
  chassis/fan.cpp
  chassis/led.cpp
  chassis/pmbus.cpp
  chassis/power_supply.cpp
  chassis/temperature.cpp
  chassis/watchdog.cpp
  facade/io.cpp
  flash/boot_loader.cpp
  flash/cpld_upgrade.cpp
  flash/flash_lock.cpp
  flash/image_upgrade.cpp
  flash/os_image.cpp
  flash/partition.cpp
  flash/partition_erase.cpp
  flash/partition_read.cpp
  flash/partition_write.cpp
  flash/shell_command.cpp
  identity/board_catalogue.cpp
  identity/board_model.cpp
  identity/boot_block.cpp
  identity/boot_settings.cpp
  identity/crc32.cpp
  identity/device_id.cpp
  identity/device_info.cpp
  identity/eeprom.cpp
  identity/fixed_answers.cpp
  identity/mac_address.cpp
  identity/product_record.cpp
  identity/reported_steps.cpp
  identity/serial_number.cpp
  identity/versions.cpp
  kernel/cpld.cpp
  kernel/gpio.cpp
  kernel/i2c.cpp
  kernel/mdio.cpp
  kernel/reported_registers.cpp
  kernel/request.cpp
  kernel/status_text.cpp
  kernel/version.cpp
  poe/app_status.cpp
  poe/bus.cpp
  poe/controllers.cpp
  poe/dispatcher.cpp
  poe/lock_file.cpp
  poe/port_map.cpp
  poe/port_records.cpp
  poe/presence.cpp
  poe/rtl8239/bus.cpp
  poe/rtl8239/debug_commands.cpp
  poe/rtl8239/device_init.cpp
  poe/rtl8239/driver.cpp
  poe/rtl8239/firmware.cpp
  poe/rtl8239/global_settings.cpp
  poe/rtl8239/operations.cpp
  poe/rtl8239/port_records.cpp
  poe/rtl8239/port_settings.cpp
  poe/rtl8239/queries.cpp
  poe/rtl8239/transport.cpp
  poe/service.cpp
  support/message.cpp
  transceiver/lines.cpp
  transceiver/memory.cpp)
# The seconds of 32-bit systems end in January 2038 unless they are asked for 64 bits, which glibc 2.34 and
# newer have.
if(BSP_TIME_64)
  set_source_files_properties(chassis/clock.cpp PROPERTIES
    COMPILE_DEFINITIONS "_TIME_BITS=64;_FILE_OFFSET_BITS=64")
else()
  target_compile_definitions(bsp_objects PRIVATE BSP_TIME_32)
endif()
target_include_directories(bsp_objects PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(bsp_objects PRIVATE bsp_warnings bsp_all_sanitizers bsp_coverage bsp_bare)
# Debug information is what the library's binary interface is judged by; 'cmake --install --strip'
# leaves it out.
if(NOT BSP_SANITIZE AND NOT BSP_COVERAGE)
  target_compile_options(bsp_objects PRIVATE -g -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
endif()

# The exported names are listed in one file; the linker exports these and nothing else.
set(BSP_EXPORTS ${PROJECT_SOURCE_DIR}/cmake/libbsp.map)

add_library(bsp SHARED $<TARGET_OBJECTS:bsp_objects>)
add_library(bsp::bsp ALIAS bsp) # its name in the installed package
set_target_properties(bsp PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1
                                     LINK_DEPENDS ${BSP_EXPORTS})
target_link_options(bsp PRIVATE -Wl,--version-script=${BSP_EXPORTS})
target_link_libraries(bsp PRIVATE $<BUILD_INTERFACE:bsp_sanitizers> $<BUILD_INTERFACE:bsp_coverage>)
bsp_link_bare(bsp)

add_library(bsp_static STATIC $<TARGET_OBJECTS:bsp_objects>)
add_library(bsp::bsp_static ALIAS bsp_static)
set_target_properties(bsp_static PROPERTIES OUTPUT_NAME bsp LINKER_LANGUAGE C)
if(BSP_COVERAGE)
  target_link_options(bsp_static INTERFACE $<BUILD_INTERFACE:--coverage>)
endif()

foreach(library bsp bsp_static)
  target_include_directories(${library} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                               $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()

install(TARGETS bsp bsp_static EXPORT bsp-targets
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE COMPONENT development)
install(FILES include/bsp.h TYPE INCLUDE COMPONENT development)
install(FILES docs/man/bsp.h.3 DESTINATION ${CMAKE_INSTALL_MANDIR}/man3 COMPONENT development)

include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/bsp)
install(EXPORT bsp-targets NAMESPACE bsp:: DESTINATION ${package_folder} FILE bsp-config.cmake
        COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/bsp-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/bsp-config-version.cmake DESTINATION ${package_folder}
        COMPONENT development)

set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /prefix/${pkgconfig_folder} /prefix)
configure_file(cmake/bsp.pc.in bsp.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/bsp.pc DESTINATION ${pkgconfig_folder} COMPONENT development)

# The folder without which no call learns the device id: made at each start by systemd, or by what the example shows.
install(FILES packaging/tmpfiles/bsp.conf DESTINATION lib/tmpfiles.d COMPONENT runtime)
install(PROGRAMS packaging/init/S01bsp DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libbsp1/examples COMPONENT runtime)
