# Turns catalogue/exports.txt into what each system needs. Sets
#   EXPORTS_HEADER   <curvebank/exports.h>: the exported models declared, and the list as a macro
#   EXPORTS_DEF      module definition file: names and ordinals of the DLL
#   EXPORTS_MAP      ELF version script: the exported names, all others local
#   EXPORTS_ALIASES  linker options that give a model its export name where that is not its own

set(exports_txt ${CMAKE_CURRENT_SOURCE_DIR}/catalogue/exports.txt)
set(EXPORTS_HEADER ${CMAKE_CURRENT_BINARY_DIR}/include/curvebank/exports.h)
set(EXPORTS_DEF ${CMAKE_CURRENT_BINARY_DIR}/curvebank.def)
set(EXPORTS_MAP ${CMAKE_CURRENT_BINARY_DIR}/curvebank.map)
set(EXPORTS_ALIASES "")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports_txt})

file(STRINGS ${exports_txt} lines REGEX "^ *[0-9]")
foreach(line IN LISTS lines)
    string(REGEX MATCHALL "[^ ]+" fields "${line}")
    list(LENGTH fields count)
    list(GET fields 0 ordinal)
    list(GET fields 1 export)
    set(model ${export})
    set(catalogue_name ${export})
    if(count EQUAL 3)
        list(GET fields 2 catalogue_name)
        if(catalogue_name STREQUAL "-")
            set(catalogue_name "")
        else()
            set(model ${catalogue_name})
            list(APPEND EXPORTS_ALIASES "LINKER:--defsym=${export}=${model}")
        endif()
    endif()
    string(APPEND def "    ${export}=${model} @${ordinal}\n")
    string(APPEND map "        ${export};\n")
    if(ordinal GREATER 100)  # the lookup functions below it have signatures and a header of their own
        string(APPEND declarations "CURVEBANK_MODEL(${export});\n")
        string(APPEND macro_lines "    X(${export}, ${ordinal}, \"${catalogue_name}\") \\\n")
    endif()
endforeach()

file(CONFIGURE OUTPUT ${EXPORTS_DEF} CONTENT "LIBRARY curvebank.dll\nEXPORTS\n${def}")
file(CONFIGURE OUTPUT ${EXPORTS_MAP} CONTENT "{\n    global:\n${map}    local:\n        *;\n};\n")
configure_file(catalogue/exports.h.in ${EXPORTS_HEADER} @ONLY)
