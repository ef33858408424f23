# Script of krod_embed_text: INPUT, OUTPUT, NAME.
get_filename_component(leaf ${INPUT} NAME)
file(READ ${INPUT} hex HEX)
string(LENGTH "${hex}" digits)
math(EXPR bytes "${digits} / 2")
string(REGEX REPLACE "(..)" "'\\\\x\\1'," array "${hex}")
file(WRITE ${OUTPUT}.new
"// Made from ${leaf}; do not edit.
#pragma once

namespace plime::text::${NAME} {

inline constexpr char Body[] = {
    ${array}'\\0'}; // ${bytes} bytes

} // namespace plime::text::${NAME}
")
configure_file(${OUTPUT}.new ${OUTPUT} COPYONLY)
