# SPDX-License-Identifier: Apache-2.0
# KROD_SANITIZE: sanitizers for every target, the plug-ins too, which must have the same as their host.
# KROD_NO_UNDEFINED: link options of libraries that must name all they need. clang puts a sanitizer's runtime into
# programs only, so that there the libraries lack its symbols by intent.
set(KROD_SANITIZE "" CACHE STRING "Sanitizers as -fsanitize names them, for instance address,undefined")

set(KROD_NO_UNDEFINED -Wl,-z,defs)
if(KROD_SANITIZE)
  add_compile_options(-fsanitize=${KROD_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KROD_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
    set(KROD_NO_UNDEFINED "")
    # How g++ tells the sources; clang++ has another way, which they then need not know.
    foreach(sanitizer address thread)
      if(KROD_SANITIZE MATCHES ${sanitizer})
        string(TOUPPER ${sanitizer} name)
        add_compile_definitions(__SANITIZE_${name}__)
      endif()
    endforeach()
  endif()
endif()
