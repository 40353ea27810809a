# A room is one folder of src/ with one static library. Its headers are reached as "room/Header.h", and only by
# targets that link the room: each room has an include root of its own in the build tree, which holds nothing
# but links to that room's headers, so that an include against the arrows does not compile.

add_library(tavril_options INTERFACE)
target_compile_options(tavril_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor
                                                -Woverloaded-virtual)
tavril_warnings_are_errors(warnings_are_errors)
if(warnings_are_errors)
  target_compile_options(tavril_options INTERFACE -Werror)
endif()
# No path of the machine in what is handed out. It stands here, as no preset could quote a path with a blank.
target_compile_options(tavril_options INTERFACE "$<$<CONFIG:Release>:-ffile-prefix-map=${CMAKE_SOURCE_DIR}=.>")
target_compile_definitions(tavril_options INTERFACE QT_NO_CAST_FROM_BYTEARRAY QT_NO_KEYWORDS
                                                    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(CMAKE_UNITY_BUILD)
  # Sources that share a translation unit see each other's names; in the preset "dev" each stands for itself.
  target_compile_options(tavril_options INTERFACE -Wno-shadow)
endif()
if(TAVRIL_SANITIZE)
  target_compile_options(tavril_options INTERFACE -fsanitize=${TAVRIL_SANITIZE} -fno-omit-frame-pointer
                                                  -fno-sanitize-recover=all)
  target_link_options(tavril_options INTERFACE -fsanitize=${TAVRIL_SANITIZE})
  # The compilers do not agree on how to ask for this.
  foreach(sanitizer address thread)
    if(TAVRIL_SANITIZE MATCHES ${sanitizer})
      string(TOUPPER ${sanitizer} name)
      target_compile_definitions(tavril_options INTERFACE TAVRIL_SANITIZES_${name})
    endif()
  endforeach()
endif()

# tavril_alone(<source>...): sources that a unity build compiles by themselves, since their names clash with others'.
function(tavril_alone)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()

# tavril_room(<target> [PLAIN] FOLDER <folder below src/> SOURCES ... LINK ...)
# A plain room knows only the standard library, so it takes no precompiled header, which has Qt's.
function(tavril_room target)
  cmake_parse_arguments(ROOM "PLAIN" "FOLDER" "SOURCES;LINK" ${ARGN})
  set(root ${CMAKE_BINARY_DIR}/rooms/${target})
  file(MAKE_DIRECTORY ${root}/${ROOM_FOLDER})
  file(GLOB headers CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${ROOM_FOLDER}/*.h)
  foreach(header ${headers})
    get_filename_component(name ${header} NAME)
    file(CREATE_LINK ${header} ${root}/${ROOM_FOLDER}/${name} SYMBOLIC)
  endforeach()
  add_library(${target} STATIC ${ROOM_SOURCES})
  set_target_properties(${target} PROPERTIES
                        UNITY_BUILD_CODE_BEFORE_INCLUDE "// NOLINTNEXTLINE(bugprone-suspicious-include)")
  target_include_directories(${target} PUBLIC ${root})
  target_link_libraries(${target} PUBLIC ${ROOM_LINK} PRIVATE tavril_options)
  if(TAVRIL_PCH STREQUAL "ON" AND NOT ROOM_PLAIN)
    target_precompile_headers(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src/pch.h)
  endif()
endfunction()

# tavril_designs(<variable> <design.ui>...): the headers that the designs become, for the sources of a room, in the variable.
# Not by AUTOUIC: with it, a design that was edited only takes effect in the build after the next one.
function(tavril_designs variable)
  qt_wrap_ui(headers ${ARGN})
  set_source_files_properties(${headers} PROPERTIES SKIP_AUTOMOC ON)
  add_custom_target(${variable} DEPENDS ${headers})
  add_dependencies(generated_headers ${variable})
  set(${variable} ${headers} PARENT_SCOPE)
endfunction()

function(tavril_program target)
  cmake_parse_arguments(PROGRAM "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${target} ${PROGRAM_SOURCES})
  target_link_libraries(${target} PRIVATE ${PROGRAM_LINK} tavril_options)
  set_target_properties(${target} PROPERTIES UNITY_BUILD OFF)
endfunction()
