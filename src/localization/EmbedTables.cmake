# Writes a C++ source holding every table JSON as a string, so the program
# carries its words with it. Called as a script: -DTABLES_DIR=... -DOUTPUT=...
file(GLOB tables "${TABLES_DIR}/*.json")
list(SORT tables)
set(body "// Generated from src/localization/tables by EmbedTables.cmake.\n#include \"LocalizationManager.h\"\n\nnamespace tosvar {\n\nstd::optional<std::string> LocalizationManager::builtInTable(std::string_view code) {\n")
foreach(table IN LISTS tables)
  get_filename_component(code "${table}" NAME_WE)
  file(READ "${table}" text)
  string(APPEND body "    if (code == \"${code}\") return std::string(R\"tosvar-table(${text})tosvar-table\");\n")
endforeach()
string(APPEND body "    return std::nullopt;\n}\n\n} // namespace tosvar\n")
file(WRITE "${OUTPUT}.tmp" "${body}")
file(COPY_FILE "${OUTPUT}.tmp" "${OUTPUT}" ONLY_IF_DIFFERENT)
