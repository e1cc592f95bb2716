# Every member the script registrations give (property, function, static function,
# field, enumeration and its values) is used by a script of the suite: each name must be
# a word of some .lua file here. Run as
#   cmake -DSOURCE_DIR=<top of the repository> -DSUITE_DIR=<this folder> -P members.cmake
# Names shared by several classes ("count", "at") are met by any of them; a member that
# no script names at all fails.
file(GLOB registrations ${SOURCE_DIR}/src/engine/script/classes_*.cpp)
list(APPEND registrations ${SOURCE_DIR}/src/engine/script/scriptimage.cpp ${SOURCE_DIR}/plugins/sample/samplescript.cpp)

file(GLOB_RECURSE scripts ${SUITE_DIR}/*.lua)
set(suite "")
foreach(script ${scripts})
    file(READ ${script} text)
    string(APPEND suite "${text}\n")
endforeach()
string(REGEX MATCHALL "[A-Za-z_][A-Za-z0-9_]*" words "${suite}")
list(REMOVE_DUPLICATES words)

set(count 0)
set(unused "")
foreach(registration ${registrations})
    file(READ ${registration} text)
    string(REGEX MATCHALL "\\.(property|function|staticFunction|field|enumeration)\\([ \t\r\n]*\"[A-Za-z0-9_]+\"|\\{\"[A-Za-z0-9_]+\","
           found "${text}")
    get_filename_component(file ${registration} NAME)
    foreach(entry ${found})
        string(REGEX REPLACE ".*\"([A-Za-z0-9_]+)\".*" "\\1" name "${entry}")
        math(EXPR count "${count} + 1")
        list(FIND words ${name} at)
        if(at EQUAL -1)
            string(APPEND unused "\n  ${file}: ${name}")
        endif()
    endforeach()
endforeach()

if(count LESS 300)
    message(FATAL_ERROR "only ${count} members found in the registrations: has their form changed?")
endif()
if(unused)
    message(FATAL_ERROR "members no script of the suite uses:${unused}")
endif()
message(STATUS "${count} registered members, each used by the suite")
