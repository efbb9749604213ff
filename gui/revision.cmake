# Writes the git revision of the sources into the header ZIEL, at every build of flurix_gui (cmake -P
# with QUELLEN and ZIEL). The header is replaced only when the revision changed, so that only the
# info window is compiled again. A tree that is no git checkout, or no git, gives "unbekannt".
set(revision "unbekannt")
find_package(Git QUIET)
if(GIT_FOUND)
    execute_process(COMMAND "${GIT_EXECUTABLE}" -C "${QUELLEN}" describe --always --dirty --abbrev=12
                    OUTPUT_VARIABLE ausgabe RESULT_VARIABLE ergebnis
                    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(ergebnis EQUAL 0 AND NOT ausgabe STREQUAL "")
        set(revision "${ausgabe}")
    endif()
endif()
file(WRITE "${ZIEL}.neu"
     "#pragma once\n"
     "// Written by gui/revision.cmake at every build: the git revision the program was built from.\n"
     "#include <string_view>\n"
     "namespace flurix::gui {\n"
     "inline constexpr std::string_view GitRevision = \"${revision}\";\n"
     "}\n")
file(COPY_FILE "${ZIEL}.neu" "${ZIEL}" ONLY_IF_DIFFERENT)
file(REMOVE "${ZIEL}.neu")
