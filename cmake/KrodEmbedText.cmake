# krod_embed_text(target file...)
# Makes a file NAME.frag or NAME.md known to C++ as `inline constexpr char Body[]` in namespace plime::text::NAME,
# header "NAME.frag.h" or "NAME.md.h". Bytes are embedded as they are, line ends and all.
set(KROD_EMBED_TEXT_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/EmbedText.cmake)

function(krod_embed_text target)
  foreach(file IN LISTS ARGN)
    get_filename_component(name ${file} NAME_WE)
    get_filename_component(leaf ${file} NAME)
    set(header ${CMAKE_CURRENT_BINARY_DIR}/embedded/${leaf}.h)
    add_custom_command(OUTPUT ${header}
      COMMAND ${CMAKE_COMMAND} -DINPUT=${CMAKE_CURRENT_SOURCE_DIR}/${file} -DOUTPUT=${header} -DNAME=${name}
              -P ${KROD_EMBED_TEXT_SCRIPT}
      DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${file} ${KROD_EMBED_TEXT_SCRIPT} VERBATIM)
    list(APPEND headers ${header})
  endforeach()
  target_sources(${target} PRIVATE ${headers})
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/embedded)
endfunction()
