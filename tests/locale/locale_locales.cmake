# Builds the locales of the locale tests into OUT with localedef, as "source charmap
# directory" triples. Failure is not an error here: the cases that need a missing
# locale skip and say why.
file(MAKE_DIRECTORY ${OUT})
find_program(LOCALEDEF localedef)
set(locales
  "fr_FR ISO-8859-1 fr_FR.ISO-8859-1"
  "fr_FR ISO-8859-1 fr_FR"
  "ja_JP EUC-JP ja_JP.EUC-JP"
  "ko_KR EUC-KR ko_KR"
  "ko_KR EUC-KR ko_KR.EUC-KR"
  "de_DE@euro ISO-8859-15 de_DE.ISO-8859-15@euro")
foreach(entry ${locales})
  separate_arguments(parts UNIX_COMMAND "${entry}")
  list(GET parts 0 source)
  list(GET parts 1 charmap)
  list(GET parts 2 name)
  if(EXISTS ${OUT}/${name}/LC_CTYPE)
    continue()
  endif()
  if(NOT LOCALEDEF)
    message("localedef not found: ${name} cannot be built")
  else()
    execute_process(COMMAND ${LOCALEDEF} -i ${source} -f ${charmap} ${OUT}/${name}
                    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT EXISTS ${OUT}/${name}/LC_CTYPE)
      message("localedef failed for ${name} (${status}): ${output}")
    endif()
  endif()
endforeach()
