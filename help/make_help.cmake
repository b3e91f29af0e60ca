# Writes the handbook's pages and the help compiler's project into a folder:
#   cmake -DSOURCE=help -DOUTPUT=DIR -DPAGES=a.html,b.html -DVERSION=X -P make_help.cmake
#
# PAGES is the order of the contents. A page's title is its <title>, its chapters are its
# <h2 id="...">, its index entries are its keywords, separated by commas. Each page gets a line at
# its foot that leads to the pages before and behind it and to the contents.

function(title_of page result)
  file(READ ${SOURCE}/${page} text)
  string(REGEX MATCH "<title>([^<]*)</title>" found "${text}")
  if(NOT found)
    message(FATAL_ERROR "${page} has no title")
  endif()
  set(${result} "${CMAKE_MATCH_1}" PARENT_SCOPE)
endfunction()

function(sitemap_entry name target result)
  set(${result}
      "<li><object type=\"text/sitemap\"><param name=\"Name\" value=\"${name}\"><param name=\"Local\" value=\"${target}\"></object>\n"
      PARENT_SCOPE)
endfunction()

string(REPLACE "," ";" PAGES "${PAGES}")
list(LENGTH PAGES count)
math(EXPR last "${count} - 1")
set(sitemap_head "<!DOCTYPE HTML PUBLIC \"-//IETF//DTD HTML//EN\">\n<html><body>\n<ul>\n")
set(sitemap_foot "</ul>\n</body></html>\n")
set(contents "")   # of the compiled help
set(list "")       # of index.html
set(index_lines "")

foreach(i RANGE ${last})
  list(GET PAGES ${i} page)
  title_of(${page} title)
  file(READ ${SOURCE}/${page} text)

  set(turn "<p class=\"turn\">")
  if(i GREATER 0)
    math(EXPR j "${i} - 1")
    list(GET PAGES ${j} previous)
    title_of(${previous} previous_title)
    string(APPEND turn "<a href=\"${previous}\">&larr; ${previous_title}</a> | ")
  endif()
  string(APPEND turn "<a href=\"index.html\">Contents</a>")
  if(i LESS last)
    math(EXPR j "${i} + 1")
    list(GET PAGES ${j} next)
    title_of(${next} next_title)
    string(APPEND turn " | <a href=\"${next}\">${next_title} &rarr;</a>")
  endif()
  string(REPLACE "</body>" "${turn}</p>\n</body>" with_turn "${text}")
  file(WRITE ${OUTPUT}/${page} "${with_turn}")

  sitemap_entry("${title}" ${page} entry)
  string(APPEND contents "${entry}<ul>\n")
  string(APPEND list "<li><a href=\"${page}\">${title}</a></li>\n")
  string(REGEX MATCHALL "<h2 id=\"[^\"]*\">[^<;]*</h2>" chapters "${text}")
  foreach(chapter IN LISTS chapters)
    string(REGEX MATCH "id=\"([^\"]*)\">([^<]*)<" found "${chapter}")
    sitemap_entry("${CMAKE_MATCH_2}" "${page}#${CMAKE_MATCH_1}" entry)
    string(APPEND contents "${entry}")
  endforeach()
  string(APPEND contents "</ul>\n")

  string(REGEX MATCH "name=\"keywords\" content=\"([^\"]*)\"" found "${text}")
  string(REGEX REPLACE ", *" ";" keywords "${CMAKE_MATCH_1}")
  foreach(keyword IN LISTS keywords)
    sitemap_entry("${keyword}" ${page} entry)
    list(APPEND index_lines "${entry}")
  endforeach()
endforeach()

list(SORT index_lines CASE INSENSITIVE)
list(JOIN index_lines "" index_lines)
list(GET PAGES 0 first)
file(WRITE ${OUTPUT}/twHelp.hhc "${sitemap_head}${contents}${sitemap_foot}")
file(WRITE ${OUTPUT}/twHelp.hhk "${sitemap_head}${index_lines}${sitemap_foot}")
configure_file(${SOURCE}/index.html.in ${OUTPUT}/index.html @ONLY)
file(COPY ${SOURCE}/style.css ${SOURCE}/../packaging/icons/org.tarnwick.Tarnwick-64.png
     DESTINATION ${OUTPUT})
file(RENAME ${OUTPUT}/org.tarnwick.Tarnwick-64.png ${OUTPUT}/tarnwick.png)

# Copies keep the age of what they were copied from; the build goes by that of the results.
file(TOUCH ${OUTPUT}/index.html ${OUTPUT}/style.css ${OUTPUT}/tarnwick.png)

list(JOIN PAGES "\n" files)
file(WRITE ${OUTPUT}/twHelp.hhp "[OPTIONS]
Compatibility=1.1 or later
Compiled file=twHelp.chm
Contents file=twHelp.hhc
Index file=twHelp.hhk
Default topic=${first}
Title=Tarnwick Help
Language=0x409 English (United States)
Full-text search=Yes

[FILES]
index.html
${files}
style.css
tarnwick.png
")
