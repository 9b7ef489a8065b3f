# Settings that every target of the project shares, and the one way a shared library is declared.

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    # Without these, ccache passes over everything that uses a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros
        ${CCACHE_PROGRAM})
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endif()

# Compiles each public header alone: `cmake --build BUILD --target all_verify_interface_header_sets`.
set(CMAKE_VERIFY_INTERFACE_HEADER_SETS ON)

add_library(oz_settings INTERFACE)
target_compile_definitions(oz_settings INTERFACE QT_NO_KEYWORDS)
target_compile_options(oz_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-qual -Wformat=2
    $<$<BOOL:${OZ_WARNINGS_AS_ERRORS}>:-Werror>)
if(OZ_SANITIZE)
    # The check of objects' types looks at memory through a pipe, and takes none for a fault where a test leaves no
    # descriptor free.
    target_compile_options(oz_settings INTERFACE -fsanitize=${OZ_SANITIZE} -fno-sanitize=vptr -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    target_link_options(oz_settings INTERFACE -fsanitize=${OZ_SANITIZE})
endif()

# For sources that check how they are used; a release has nothing of it.
set(OZ_ASSERTION_DEFINITION $<$<OR:$<BOOL:${OZ_ASSERTIONS}>,$<CONFIG:Debug>>:OZ_ASSERTIONS>)

# What is shipped states the encoding of every text; tests may write plain literals.
add_library(oz_product INTERFACE)
target_link_libraries(oz_product INTERFACE oz_settings)
target_compile_definitions(oz_product INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_USE_QSTRINGBUILDER)

# oz_precompiled(TARGET): uses the precompiled headers that the libraries and programs share.
function(oz_precompiled target)
    if(NOT TARGET oz_pch)
        file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/oz_pch.cpp CONTENT "// Holds the shared precompiled headers.\n")
        add_library(oz_pch OBJECT ${PROJECT_BINARY_DIR}/oz_pch.cpp)
        set_target_properties(oz_pch PROPERTIES AUTOMOC OFF)
        target_link_libraries(oz_pch PRIVATE oz_product Qt6::Core)
        target_precompile_headers(oz_pch PRIVATE
            <QByteArray> <QObject> <QPointer> <QString> <QVariantMap>
            <algorithm> <functional> <map> <memory> <optional> <vector>)
    endif()
    target_precompile_headers(${target} REUSE_FROM oz_pch)
endfunction()

# oz_compile_by_folder(TARGET): compiles the target's sources of a folder as one, where OZ_UNITY_BUILD is on. To be called
# once the target has all of them.
function(oz_compile_by_folder target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${OZ_UNITY_BUILD} UNITY_BUILD_MODE GROUP)
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources INCLUDE REGEX "\\.cpp$")
    foreach(source IN LISTS sources)
        cmake_path(ABSOLUTE_PATH source)
        cmake_path(RELATIVE_PATH source BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} OUTPUT_VARIABLE place)
        cmake_path(GET place PARENT_PATH folder)
        string(MAKE_C_IDENTIFIER "${folder}" group)
        set_source_files_properties(${source} PROPERTIES UNITY_GROUP "${group}")
    endforeach()
endfunction()

# oz_public_headers(TARGET HEADER...): names public headers of the library, in its folder include/.
function(oz_public_headers target)
    list(TRANSFORM ARGN PREPEND include/)
    target_sources(${target} PUBLIC FILE_SET HEADERS FILES ${ARGN})
endfunction()

# oz_shared_library(TARGET EXPORT_NAME): a versioned shared library with the project's settings. Its public headers are
# in the folder include/, from which they are installed.
function(oz_shared_library target export_name)
    add_library(${target} SHARED)
    add_library(oz::${export_name} ALIAS ${target})
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${export_name}
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    target_link_libraries(${target} PRIVATE oz_product)
    oz_precompiled(${target})
    if(NOT OZ_SANITIZE) # a sanitizer's runtime is found only when the program starts
        target_link_options(${target} PRIVATE -Wl,--no-undefined
            -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/library.map)
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/library.map)
    endif()
    target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS include)
    target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_compile_features(${target} PUBLIC cxx_std_20)
    if(NOT OZ_EXPORT)
        set(OZ_EXPORT OzDeviceTargets)
    endif()
    install(TARGETS ${target} EXPORT ${OZ_EXPORT}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        NAMELINK_COMPONENT Development
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT Development)
endfunction()
