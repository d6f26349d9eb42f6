# Run by "cmake -P" with PAGE and OUTPUT: writes the page with its style sheet and every picture that
# it names ("guide/guide.css" and "guide/NAME.png", beside the page) put into it, so that it is a
# single file.
find_program(BASE64 base64 REQUIRED)
get_filename_component(directory "${PAGE}" DIRECTORY)
file(READ "${PAGE}" page)
file(READ "${directory}/guide/guide.css" style)
string(REPLACE "<link rel=\"stylesheet\" href=\"guide/guide.css\">" "<style>\n${style}</style>"
  page "${page}")
string(REGEX MATCHALL "guide/[a-z/-]+\\.png" pictures "${page}")
list(REMOVE_DUPLICATES pictures)
foreach(picture IN LISTS pictures)
  execute_process(COMMAND ${BASE64} --wrap=0 "${directory}/${picture}"
    OUTPUT_VARIABLE data COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "\"${picture}\"" "\"data:image/png;base64,${data}\"" page "${page}")
endforeach()
file(WRITE "${OUTPUT}" "${page}")
