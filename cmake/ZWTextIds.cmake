# Writes the header of named text ids from the string tables.
#   cmake -DOUTPUT=ZWTextId.h -DINPUTS="a.tsv;b.tsv" -P ZWTextIds.cmake
# Each table line is "id<TAB>name<TAB>text"; the header names every id, so
# code says ZWTextId::StoreCannotOpen where it shows that text.
set(body "")
foreach(input IN LISTS INPUTS)
  file(READ "${input}" content)
  # A leading line break lets every line start with one: "^" in MATCHALL
  # also matches where the previous match ended.
  string(PREPEND content "\n")
  get_filename_component(table "${input}" NAME)
  string(APPEND body "    // ${table}\n")
  string(REGEX MATCHALL "\n[0-9]+\t[A-Za-z0-9_]+\t" entries "${content}")
  string(REGEX MATCHALL "\n[0-9]" lines "${content}")
  list(LENGTH entries named)
  list(LENGTH lines all)
  if(NOT named EQUAL all)
    message(FATAL_ERROR "${input}: ${all} texts but ${named} names; every line is id<TAB>name<TAB>text")
  endif()
  foreach(entry IN LISTS entries)
    string(REGEX REPLACE "^\n([0-9]+)\t([A-Za-z0-9_]+)\t$" "    \\2 = \\1,\n" line "${entry}")
    string(APPEND body "${line}")
  endforeach()
endforeach()
set(text "#pragma once\n\n// Generated at build time from host/core/strings/*.tsv: edit the tables, not\n// this file.\nnamespace ZWTextId {\nenum : int {\n${body}};\n} // namespace ZWTextId\n")
# Rewritten only when it changes, so that a touched table does not rebuild
# everything.
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" old)
endif()
if(NOT old STREQUAL text)
  file(WRITE "${OUTPUT}" "${text}")
endif()
