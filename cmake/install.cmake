# Installs the library, its headers and what find_package and pkg-config need to find them. Everything installed
# names its neighbours by relative paths, so the tree can be moved; directories given as absolute paths stay so.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(KIVO2D_PUBLIC_HEADERS
    Bbox2.h
    Circle2.h
    Color.h
    ConstraintGraph2.h
    ConstraintInsertionStrategy.h
    ConstraintSegment2.h
    Edge2.h
    KivoException.h
    Kivo_2D.h
    Label.h
    MeshArrays.h
    MeshGenParams.h
    MsgBase.h
    Orientation2.h
    Point2.h
    RefinementReport.h
    Segment2.h
    SegmentChecker.h
    Triangle2.h
    TriangleAroundVertexIterator.h
    UserPredicateT.h
    Vector2.h
    VertexPair2.h
    Visualizer2.h
    Zone2.h
    ZoneQuality.h
    export.h
    functions.h
    fwd.h
)

set(KIVO2D_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/kivo2d)
target_include_directories(kivo2d INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                           $<INSTALL_INTERFACE:${KIVO2D_HEADER_DIR}>)

option(KIVO2D_INSTALL "Install library, headers and package files" ${PROJECT_IS_TOP_LEVEL})
if(NOT KIVO2D_INSTALL)
    return()
endif()

install(TARGETS kivo2d EXPORT Kivo2DTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
list(TRANSFORM KIVO2D_PUBLIC_HEADERS PREPEND ${PROJECT_SOURCE_DIR}/include/ OUTPUT_VARIABLE headerPaths)
install(FILES ${headerPaths} DESTINATION ${KIVO2D_HEADER_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

# find_package(Kivo2D CONFIG)
set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/Kivo2D)
install(EXPORT Kivo2DTargets NAMESPACE Kivo2D:: DESTINATION ${packageDir})
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/Kivo2DConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/Kivo2DConfig.cmake INSTALL_DESTINATION ${packageDir}
                              NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/Kivo2DConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/Kivo2DConfig.cmake ${PROJECT_BINARY_DIR}/Kivo2DConfigVersion.cmake
        DESTINATION ${packageDir})

# pkg-config kivo2d: the prefix is found from the file's own place, unless the library directory lies outside it.
set(pcPrefix ${CMAKE_INSTALL_PREFIX})
if(NOT IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    file(RELATIVE_PATH upToPrefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
    string(REGEX REPLACE "/$" "" upToPrefix ${upToPrefix})
    set(pcPrefix "\${pcfiledir}/${upToPrefix}")
endif()
cmake_path(APPEND pcLibDir "\${prefix}" ${CMAKE_INSTALL_LIBDIR})
cmake_path(APPEND pcHeaderDir "\${prefix}" ${KIVO2D_HEADER_DIR})
if(BUILD_SHARED_LIBS)
    set(pcStaticLibs "")
    set(pcStaticCflags "")
else() # an archive does not say what it needs, so whoever links it must
    set(pcStaticLibs " -lgmp -pthread")
    set(pcStaticCflags " -DKIVO2D_STATIC")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/kivo2d.pc.in ${PROJECT_BINARY_DIR}/kivo2d.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kivo2d.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
