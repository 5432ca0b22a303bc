# SPDX-License-Identifier: Apache-2.0
# An adapter that lacks something does not compile, and the compiler says in a sentence what it lacks.

set(compile ${CMAKE_CXX_COMPILER} -std=c++20 -fsyntax-only
    -I$<JOIN:$<TARGET_PROPERTY:plex-dds-engine,INTERFACE_INCLUDE_DIRECTORIES>,$<SEMICOLON>-I>
    ${CMAKE_CURRENT_SOURCE_DIR}/AdapterRequirements.cpp)

add_test(NAME AdapterRequirements.CompleteAdapterCompiles COMMAND ${compile} COMMAND_EXPAND_LISTS)

set(wireType "The adapter must name its wire type, a default-constructible and copyable value, as DdsType")
set(topicDataType "The adapter must name its topic data type, made without arguments, as PubSubType")
set(interface "The adapter must implement the interface type, which must be a DataEntity of itself")
set(owning "The adapter must have a default constructor that makes it own a default wire value")
set(borrowing "The adapter must have a constructor .DdsType&, Borrow. that makes it view a wire value")
set(reaching "The adapter must reach its wire value through wire.., const and not const")
set(copying "The adapter must copy fields through assign.const DdsType&. and a static copy.from, to.")

# plex_adapter_must_not_compile(TEST MACRO SENTENCE MACRO SENTENCE…): an adapter that lacks what all macros say has the
# compiler say each one's sentence, in the order of the checks. Most of the time goes into reading headers, so what can
# lack together does.
function(plex_adapter_must_not_compile test)
    set(macros)
    set(errors)
    while(ARGN)
        list(POP_FRONT ARGN macro sentence)
        list(APPEND macros -D${macro})
        list(APPEND errors "error: [^\n]*${${sentence}}")
    endwhile()
    list(JOIN errors ".*" pattern)
    add_test(NAME AdapterRequirements.${test} COMMAND ${compile} ${macros} COMMAND_EXPAND_LISTS)
    set_tests_properties(AdapterRequirements.${test} PROPERTIES PASS_REGULAR_EXPRESSION "${pattern}")
endfunction()

plex_adapter_must_not_compile(AreSaidOneByOne
    LACKS_WIRE_COPY wireType
    LACKS_TOPIC_DATA_TYPE_BASE topicDataType
    LACKS_VALUE_ROOT interface
    LACKS_BORROWING_CONSTRUCTOR borrowing
    LACKS_WIRE reaching
    LACKS_ASSIGN copying)
plex_adapter_must_not_compile(AreSaidOfWhatIsNotThere
    LACKS_WIRE_TYPE wireType
    LACKS_TOPIC_DATA_TYPE topicDataType
    LACKS_INTERFACE interface
    LACKS_DEFAULT_CONSTRUCTOR owning)
plex_adapter_must_not_compile(AreSaidOfHalfOfWhatIsThere
    LACKS_TOPIC_DATA_TYPE_CONSTRUCTOR topicDataType
    LACKS_CONST_WIRE reaching
    LACKS_COPY copying)
