# Run by "cmake -P" with OUTPUT and a list FILES of "NAME_SIZE.png" paths, given as arguments behind
# "--": writes a C++ source with the bytes of every file and the table kEmbeddedPictures of them.
set(files "")
set(behind_dashes FALSE)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(index RANGE ${last})
  if(behind_dashes)
    list(APPEND files "${CMAKE_ARGV${index}}")
  elseif("${CMAKE_ARGV${index}}" STREQUAL "--")
    set(behind_dashes TRUE)
  endif()
endforeach()

set(arrays "")
set(rows "")
foreach(file IN LISTS files)
  get_filename_component(stem "${file}" NAME_WE)
  if(NOT stem MATCHES "^(.+)_([0-9]+)$")
    message(FATAL_ERROR "${file}: a picture is named NAME_SIZE.png")
  endif()
  set(name "${CMAKE_MATCH_1}")
  set(size "${CMAKE_MATCH_2}")
  file(READ "${file}" hex HEX)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${hex}")
  string(MAKE_C_IDENTIFIER "k_${stem}" identifier)
  string(APPEND arrays "const unsigned char ${identifier}[] = {${bytes}};\n")
  string(APPEND rows "    {\"${name}\", ${size}, ${identifier}, sizeof(${identifier})},\n")
endforeach()

file(WRITE "${OUTPUT}" "#include \"resources/EmbeddedPictures.h\"

namespace {
${arrays}}  // namespace

const EmbeddedPicture kEmbeddedPictures[] = {
${rows}};
const size_t kEmbeddedPictureCount = sizeof(kEmbeddedPictures) / sizeof(kEmbeddedPictures[0]);
")
