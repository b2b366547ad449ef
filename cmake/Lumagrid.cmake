# One library per folder, with the folders below it. Its headers are on the include path of those who link it, by their
# names alone; scripts/check-map proves from the sources who includes whom.

add_library(lumagrid_options INTERFACE)
target_compile_options(lumagrid_options INTERFACE -Wall -Wextra -Wpedantic)
target_compile_definitions(lumagrid_options INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII)
if(LUMAGRID_WERROR)
  target_compile_options(lumagrid_options INTERFACE -Werror)
endif()
if(LUMAGRID_SANITIZE)
  target_compile_options(lumagrid_options INTERFACE -fsanitize=${LUMAGRID_SANITIZE} -fno-sanitize-recover=undefined
                                                   -fno-omit-frame-pointer)
  target_link_options(lumagrid_options INTERFACE -fsanitize=${LUMAGRID_SANITIZE})
endif()

# The folders of these files, relative to the current one, are on the include path of NAME and of those who link it.
function(lumagrid_include_folders name)
  set(folders ${CMAKE_CURRENT_SOURCE_DIR})
  foreach(file ${ARGN})
    cmake_path(GET file PARENT_PATH folder)
    list(APPEND folders ${CMAKE_CURRENT_SOURCE_DIR}/${folder})
  endforeach()
  list(REMOVE_DUPLICATES folders)
  target_include_directories(${name} PUBLIC ${folders})
endfunction()

# lumagrid_library(NAME SOURCES file… LINK target… LINK_PRIVATE target…): LINK is for what its headers need.
function(lumagrid_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LINK_PRIVATE" ${ARGN})
  qt_add_library(${name} STATIC ${ARG_SOURCES})
  lumagrid_include_folders(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC ${ARG_LINK} PRIVATE lumagrid_options ${ARG_LINK_PRIVATE})
endfunction()

# lumagrid_qml_module(NAME URI Lumagrid.Name IMPORTS module… SOURCES file… QML file… LINK target… LINK_PRIVATE target…):
# a library that is a QML module too.
# Programs link NAMEplugin and import it with Q_IMPORT_QML_PLUGIN.
function(lumagrid_qml_module name)
  cmake_parse_arguments(ARG "" "URI" "SOURCES;QML;IMPORTS;LINK;LINK_PRIVATE" ${ARGN})
  # qmllint and the QML tools look for a module under its URI's path.
  string(REPLACE "." "/" module_path ${ARG_URI})
  qt_add_library(${name} STATIC)
  qt_add_qml_module(${name}
    URI ${ARG_URI}
    VERSION 1.0
    RESOURCE_PREFIX /qt-project.org/imports
    OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/qml/${module_path}
    SOURCES ${ARG_SOURCES}
    QML_FILES ${ARG_QML}
    IMPORTS ${ARG_IMPORTS}
    IMPORT_PATH ${CMAKE_BINARY_DIR}/qml)
  lumagrid_include_folders(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC Qt6::Quick ${ARG_LINK} PRIVATE lumagrid_options ${ARG_LINK_PRIVATE})
endfunction()

# lumagrid_test(NAME SOURCES file… LINK target…): a Qt Test program under CTest.
function(lumagrid_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  qt_add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE lumagrid_options Qt6::Test ${ARG_LINK})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT 120 ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
endfunction()
