# Turns the files of the page into a source file that defines what page_files.h declares. The scripts are joined in the
# order in which they are given.
#   cmake -DHTML=page.html -DCSS=page.css "-DJS=a.js;b.js" -DOUTPUT=page_files.cpp -P embed_page.cmake
set(text "#include \"tools/kst/report/page_files.h\"\n\nnamespace kst::tool::report {\n\n")
foreach(kind HTML CSS JS)
  string(TOLOWER ${kind} name)
  string(APPEND text "const std::string_view page_${name} = R\"~~~(")
  foreach(source ${${kind}})
    file(READ "${source}" content)
    string(APPEND text "${content}")
  endforeach()
  string(APPEND text ")~~~\";\n\n")
endforeach()
string(APPEND text "} // namespace kst::tool::report\n")
file(WRITE "${OUTPUT}" "${text}")
