# lusym_embed_text(TARGET HEADER NAMESPACE PREFIX FILE...)
#
# Puts text files into TARGET at build time: for page.css the program gets NAMESPACE::PREFIXPageCss, and its SHA-256 in
# hexadecimal as PREFIXPageCssSha256. HEADER, relative to the top of the project, declares what is used of them.
# Line ends become line feeds, so that the text and its hash do not depend on how the files were checked out.

# Run as a script (cmake -P) it writes the source file OUT.
if(CMAKE_SCRIPT_MODE_FILE)
  set(definitions "")
  foreach(index RANGE 1 ${COUNT})
    set(file "${FILE_${index}}")
    file(READ "${file}" text)
    string(REPLACE "\r\n" "\n" text "${text}")
    string(SHA256 hash "${text}")
    string(FIND "${text}" ")embedded\"" terminator)
    if(NOT terminator EQUAL -1)
      message(FATAL_ERROR "${file} holds the characters that end an embedded text")
    endif()
    get_filename_component(name "${file}" NAME)
    string(REGEX REPLACE "[^A-Za-z0-9]" ";" words "${name}")
    set(symbol "${PREFIX}")
    foreach(word IN LISTS words)
      string(SUBSTRING "${word}" 0 1 first)
      string(SUBSTRING "${word}" 1 -1 rest)
      string(TOUPPER "${first}" first)
      string(APPEND symbol "${first}${rest}")
    endforeach()
    string(APPEND definitions
      "const std::string_view ${symbol} = R\"embedded(${text})embedded\";\n"
      "const std::string_view ${symbol}Sha256 = \"${hash}\";\n")
  endforeach()
  file(WRITE "${OUT}" "#include \"${HEADER}\"\n\nnamespace ${NAMESPACE}\n{\n${definitions}} // namespace ${NAMESPACE}\n")
  return()
endif()

set(lusym_embed_text_script ${CMAKE_CURRENT_LIST_FILE})

function(lusym_embed_text target header namespace prefix)
  cmake_path(GET header STEM name)
  set(out ${CMAKE_CURRENT_BINARY_DIR}/embedded/${name}.cpp)
  list(LENGTH ARGN count)
  set(arguments "")
  set(index 0)
  foreach(file IN LISTS ARGN)
    math(EXPR index "${index} + 1")
    list(APPEND arguments "-DFILE_${index}=${file}")
  endforeach()
  add_custom_command(OUTPUT ${out}
    COMMAND ${CMAKE_COMMAND} -DOUT=${out} -DHEADER=${header} -DNAMESPACE=${namespace} -DPREFIX=${prefix}
            -DCOUNT=${count} ${arguments} -P ${lusym_embed_text_script}
    DEPENDS ${ARGN} ${lusym_embed_text_script}
    COMMENT "Embedding the texts of ${header}"
    VERBATIM)
  # It is not there yet when the linter looks at what is compiled along with it.
  set_source_files_properties(${out} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  target_sources(${target} PRIVATE ${out})
endfunction()
