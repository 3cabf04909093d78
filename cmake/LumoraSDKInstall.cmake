# Installs the SDK as a CMake package: the shared library (the platform layer is inside it), the
# public headers under include/LumoraSDK, the QML module's qmldir and type information under
# lib/qml/LumoraSDK, and the package configuration with its version file.
include(CMakePackageConfigHelpers)

# What a host includes, and everything those headers include; nothing else.
set(LUMORA_PUBLIC_HEADERS
    Lumora.h
    LumoraRowViewDelegate.h
    Views/LumoraRowView.h
    Enums/ActivityType.h
    Enums/Environment.h
    Enums/LumoraRowViewCellType.h
    Enums/LumoraRowViewStyle.h
    Enums/PageType.h
    Enums/RequestStatusError.h
    Enums/Status.h
    Models/Branding.h
    Models/Channel.h
    Models/Page.h
    Models/Serializable.h
    Models/UserInput.h)
set(LUMORA_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/LumoraSDK)
set(LUMORA_INSTALL_QMLDIR ${CMAKE_INSTALL_LIBDIR}/qml)

install(TARGETS LumoraSDK EXPORT LumoraSDKTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
foreach(header IN LISTS LUMORA_PUBLIC_HEADERS)
    cmake_path(GET header PARENT_PATH subdirectory)
    install(FILES ${PROJECT_SOURCE_DIR}/Sources/${header}
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/LumoraSDK/${subdirectory})
endforeach()
install(FILES ${LUMORA_EXPORT_HEADER_DIR}/lumorasdk_export.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/LumoraSDK)
install(FILES ${PROJECT_BINARY_DIR}/qml/LumoraSDK/qmldir
              ${PROJECT_BINARY_DIR}/qml/LumoraSDK/LumoraSDK.qmltypes
        DESTINATION ${LUMORA_INSTALL_QMLDIR}/LumoraSDK)

install(EXPORT LumoraSDKTargets NAMESPACE LumoraSDK:: DESTINATION ${LUMORA_INSTALL_CMAKEDIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/LumoraSDKConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/LumoraSDKConfig.cmake
    INSTALL_DESTINATION ${LUMORA_INSTALL_CMAKEDIR}
    PATH_VARS LUMORA_INSTALL_QMLDIR)
# 0.x: a new minor version may break hosts, so only the same minor version is compatible.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/LumoraSDKConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/LumoraSDKConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/LumoraSDKConfigVersion.cmake
        DESTINATION ${LUMORA_INSTALL_CMAKEDIR})
