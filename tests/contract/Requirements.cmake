# SPDX-License-Identifier: Apache-2.0
# An adapter that lacks something does not compile, and the compiler says in a sentence what it lacks.

set(compile ${CMAKE_CXX_COMPILER} -std=c++20 -fsyntax-only
    -I$<JOIN:$<TARGET_PROPERTY:plex-dds-engine,INTERFACE_INCLUDE_DIRECTORIES>,$<SEMICOLON>-I>
    ${CMAKE_CURRENT_SOURCE_DIR}/AdapterRequirements.cpp)

add_test(NAME AdapterRequirements.CompleteAdapterCompiles COMMAND ${compile} COMMAND_EXPAND_LISTS)

# plex_adapter_must_not_compile(SENTENCE MACRO…): the compiler says the sentence whichever macro is set.
function(plex_adapter_must_not_compile sentence)
    string(REGEX REPLACE "([][().*+?|^$])" "\\\\\\1" pattern "${sentence}")
    foreach(macro IN LISTS ARGN)
        set(test AdapterRequirements.AreSaidWhereTheAdapter_${macro})
        add_test(NAME ${test} COMMAND ${compile} -D${macro} COMMAND_EXPAND_LISTS)
        set_tests_properties(${test} PROPERTIES PASS_REGULAR_EXPRESSION "error: .*${pattern}")
    endforeach()
endfunction()

plex_adapter_must_not_compile(
    "The adapter must name its wire type, a default-constructible and copyable value, as DdsType"
    LACKS_WIRE_TYPE LACKS_WIRE_COPY)
plex_adapter_must_not_compile(
    "The adapter must name its topic data type, made without arguments, as PubSubType"
    LACKS_TOPIC_DATA_TYPE LACKS_TOPIC_DATA_TYPE_BASE LACKS_TOPIC_DATA_TYPE_CONSTRUCTOR)
plex_adapter_must_not_compile(
    "The adapter must implement the interface type, which must be a DataEntity of itself"
    LACKS_INTERFACE LACKS_VALUE_ROOT)
plex_adapter_must_not_compile(
    "The adapter must have a default constructor that makes it own a default wire value"
    LACKS_DEFAULT_CONSTRUCTOR)
plex_adapter_must_not_compile(
    "The adapter must have a constructor (DdsType&, Borrow) that makes it view a wire value"
    LACKS_BORROWING_CONSTRUCTOR)
plex_adapter_must_not_compile(
    "The adapter must reach its wire value through wire(), const and not const"
    LACKS_WIRE LACKS_CONST_WIRE)
plex_adapter_must_not_compile(
    "The adapter must copy fields through assign(const DdsType&) and a static copy(from, to)"
    LACKS_ASSIGN LACKS_COPY)
