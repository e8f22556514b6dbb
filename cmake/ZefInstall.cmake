# What an installation holds: library, headers, CMake package, pkg-config file.
include(CMakePackageConfigHelpers)

set(ZEF_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zef)

install(TARGETS zef EXPORT zefTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/zef
  FILES_MATCHING PATTERN "*.h")
install(EXPORT zefTargets NAMESPACE zef:: DESTINATION ${ZEF_CMAKE_DIR})

# A static library leaves what it needs to its users.
set(ZEF_NEEDS_TINYPLY OFF)
if(ZEF_USE_SYSTEM_TINYPLY AND NOT BUILD_SHARED_LIBS)
  set(ZEF_NEEDS_TINYPLY ON)
endif()
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/zefConfig.cmake.in ${PROJECT_BINARY_DIR}/zefConfig.cmake
  INSTALL_DESTINATION ${ZEF_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zefConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/zefConfig.cmake
  ${PROJECT_BINARY_DIR}/zefConfigVersion.cmake
  DESTINATION ${ZEF_CMAKE_DIR})

# pkg-config: paths relative to the file, so that the tree can be moved.
file(RELATIVE_PATH ZEF_PC_TO_PREFIX
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" ZEF_PC_TO_PREFIX "${ZEF_PC_TO_PREFIX}")
set(ZEF_PC_LIBS "-lzef")
set(ZEF_PC_LIBS_PRIVATE "")
set(ZEF_PC_STATIC_NEEDS "-lpthread -lstdc++ -lm")
if(ZEF_NEEDS_TINYPLY)
  string(PREPEND ZEF_PC_STATIC_NEEDS "-ltinyply ")
endif()
if(BUILD_SHARED_LIBS)
  set(ZEF_PC_LIBS_PRIVATE "${ZEF_PC_STATIC_NEEDS}")
else()
  string(APPEND ZEF_PC_LIBS " ${ZEF_PC_STATIC_NEEDS}")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/zef.pc.in ${PROJECT_BINARY_DIR}/zef.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zef.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
