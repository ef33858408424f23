# The three kinds of targets of this repository.
include(GNUInstallDirs)
include(${CMAKE_CURRENT_LIST_DIR}/KrodSanitize.cmake)

set(KROD_LIBRARY_FOLDER ${CMAKE_INSTALL_LIBDIR}/krod)
set(KROD_PLUGIN_FOLDER ${KROD_LIBRARY_FOLDER}/plugins)

# krod_host_library(name SOURCES... )
# One shared library of the open host. Hidden visibility: only what the contract or the host's own headers mark is seen.
function(krod_host_library name)
  add_library(${name} SHARED ${ARGN})
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/krod>)
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:krod_warnings>)
  target_link_options(${name} PRIVATE ${KROD_NO_UNDEFINED})
  set_target_properties(${name} PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${name} EXPORT KrodHost LIBRARY DESTINATION ${KROD_LIBRARY_FOLDER})
endfunction()

# krod_plugin(target [FOR_TESTS] NAME entry-name SOURCES... LIBRARIES...)
# A plug-in module: exactly one exported symbol, really unloadable. The units are an object library, so that no linker
# drops a unit that nobody names. -fno-gnu-unique and the version script together keep dlclose effective: a single
# unique symbol (one std::make_shared is enough) would pin the library for ever. One FOR_TESTS stays in its build folder
# and is not installed.
function(krod_plugin target)
  cmake_parse_arguments(PLUGIN "FOR_TESTS" "NAME" "SOURCES;LIBRARIES" ${ARGN})
  set(entry KROD_API_${KROD_API_DATE}__${PLUGIN_NAME})
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(WRITE ${map} "{ global: ${entry}; local: *; };\n")

  add_library(${target}_units OBJECT ${PLUGIN_SOURCES} ${KROD_PLUGIN_KIT_SOURCES})
  set_target_properties(${target}_units PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_compile_definitions(${target}_units PRIVATE KROD_PLUGIN_NAME="${PLUGIN_NAME}" KROD_PLUGIN_ENTRY=${entry})
  target_compile_options(${target}_units PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
  # Constants in shader texts are the same on every machine: no product is fused into a sum.
  target_compile_options(${target}_units PRIVATE -ffp-contract=off)
  target_link_libraries(${target}_units PUBLIC krod_plugin_kit ${PLUGIN_LIBRARIES} PRIVATE krod_warnings)

  add_library(${target} MODULE)
  target_link_libraries(${target} PRIVATE ${target}_units)
  target_link_options(${target} PRIVATE -Wl,--version-script=${map} -Wl,-z,now -Wl,-z,relro ${KROD_NO_UNDEFINED})
  set_target_properties(${target} PROPERTIES
    PREFIX "" LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} LINK_DEPENDS ${map} INSTALL_RPATH "$ORIGIN/..")
  if(NOT PLUGIN_FOR_TESTS)
    set_target_properties(${target} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/plugins)
    install(TARGETS ${target} LIBRARY DESTINATION ${KROD_PLUGIN_FOLDER})
  endif()
endfunction()

# krod_application(name SOURCES...)
# A program over the host libraries. They are all kept, also where only a plug-in uses one: a library that the program
# does not hold would leave with the plug-in, and its registries with it.
function(krod_application name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE krod_warnings)
  target_link_options(${name} PRIVATE -Wl,--no-as-needed)
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin INSTALL_RPATH "$ORIGIN/../${KROD_LIBRARY_FOLDER}")
endfunction()
