# SPDX-License-Identifier: Apache-2.0
# Writes a source file that includes those of a generated module, factories apart: they differ in names only.
# Arguments: -DMODULE=the module's folder, -DOUTPUT=the file to write.

file(GLOB sources ${MODULE}/src/*.cpp ${MODULE}/dds/*.cpp ${MODULE}/dds/*/*.cpp ${MODULE}/dds/*/*/*.cpp)
list(FILTER sources EXCLUDE REGEX "(Factories|shard[0-9]+)\\.cpp$")
set(text)
foreach(source IN LISTS sources)
    string(APPEND text "#include \"${source}\"\n")
endforeach()
file(WRITE ${OUTPUT} "${text}")
