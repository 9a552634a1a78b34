# Installs the HEADERS of a library and what they include, from SOURCE to DESTINATION, as <corvane/...>. The rooms beside
# corvane/ join it there, so what names them among the includes gets its prefix.

set(found ${HEADERS})
while(HEADERS)
    list(POP_FRONT HEADERS header)
    file(STRINGS "${SOURCE}/${header}" includes REGEX "^#include \"")
    list(TRANSFORM includes REPLACE "^#include \"(.*)\".*" "\\1")
    list(REMOVE_ITEM includes ${found})
    list(APPEND found ${includes})
    list(APPEND HEADERS ${includes})
endwhile()

foreach(header IN LISTS found)
    file(READ "${SOURCE}/${header}" text)
    string(REGEX REPLACE "(#include \")(io|stars|catalogue|stack)/" "\\1corvane/\\2/" text "${text}")
    string(REGEX REPLACE "^(io|stars|catalogue|stack)/" "corvane/\\1/" header ${header})
    file(WRITE "${WORK}/${header}" "${text}")
    cmake_path(GET header PARENT_PATH folder)
    file(INSTALL "${WORK}/${header}" DESTINATION "${DESTINATION}/${folder}")
endforeach()
