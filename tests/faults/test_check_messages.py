#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The checker of messages.json notices what is wrong, in a small tree of its own."""

import json
import pathlib
import tempfile
import unittest

import check_messages

SOURCE = r"""
#include "not/a/message.hpp"
// "nor this", /* "nor this" */
const char separated = '"'; const int number = 1'000'000; /* "nor
this" */
void f()
{
    fail("It failed " // with
         "badly" " \"here\"");
    fail(R"(It is "raw")");
    get("key");
}
"""

TEST = """
TEST_F(FailureTest,
       IsReported)
{
    expect("It failed badly \\"here\\"", R"-(It is "raw")-");
}
"""

SOURCE_NAME = "platform/part/source.cpp"


def message(text, **changes):
    entry = {"source": SOURCE_NAME, "text": text, "outcome": "PlexException", "logged": "ERROR",
             "tests": ["FailureTest.IsReported"]}
    return entry | changes


class CheckMessagesTest(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        self.table = {
            "messages": [message('It failed badly "here"'), message('It is "raw"')],
            "others": [{"source": SOURCE_NAME, "text": "key", "reason": "key of a property"}],
        }
        self.write(SOURCE_NAME, SOURCE)
        self.write("tests/part/FailureTest.cpp", TEST)

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def complaints(self):
        self.write("messages.json", json.dumps(self.table))
        return check_messages.check(self.root, self.root / "messages.json")

    def test_true_table_is_accepted(self):
        self.assertEqual(self.complaints(), [])

    def test_text_that_is_not_listed_is_named_with_its_line(self):
        self.write(SOURCE_NAME, SOURCE + 'const char* more = "It failed again";\n')
        self.assertEqual(self.complaints(),
                         [f'{SOURCE_NAME}:13: "It failed again" is not listed; is it a message?'])

    def test_changed_text_is_named_as_new_and_as_gone(self):
        self.write(SOURCE_NAME, SOURCE.replace("badly", "utterly"))
        self.assertEqual(len(self.complaints()), 2)

    def test_text_that_is_gone_is_named(self):
        self.table["messages"].append(message("It failed long ago"))
        self.assertIn(f'{SOURCE_NAME}: "It failed long ago" is listed but not in the code', self.complaints())

    def test_text_that_is_listed_twice_is_named(self):
        self.table["others"].append({"source": SOURCE_NAME, "text": 'It is "raw"', "reason": "none"})
        self.assertEqual(self.complaints(), [f'{SOURCE_NAME}: "It is "raw"" is listed twice'])

    def test_text_of_another_file_is_not_enough(self):
        self.write("include/plex/other.hpp", 'const char* const key = "key";')
        self.assertEqual(self.complaints(), ['include/plex/other.hpp:1: "key" is not listed; is it a message?'])

    def test_test_that_does_not_exist_is_named(self):
        self.table["messages"][1]["tests"] = ["FailureTest.IsForgotten"]
        self.assertEqual(self.complaints(), [f'{SOURCE_NAME}: "It is "raw"" names a test that does not exist: '
                                             "FailureTest.IsForgotten"])

    def test_test_that_does_not_expect_the_text_is_named(self):
        self.write("tests/part/FailureTest.cpp", TEST.replace("raw", "cooked") + '// It is "raw"')
        self.assertEqual(self.complaints(),
                         [f'{SOURCE_NAME}: "It is "raw"" is not in the file of its test FailureTest.IsReported'])

    def test_text_in_a_header_of_the_test_is_found(self):
        self.write("tests/part/FailureTest.cpp",
                   '#include "Texts.hpp"\n' + TEST.replace('R"-(It is "raw")-"', "raw").replace("raw", "cooked"))
        self.write("tests/part/Texts.hpp", 'constexpr const char* raw = "It is \\"raw\\"";')
        self.assertEqual(self.complaints(), [])

    def test_message_without_a_test_or_of_an_unknown_kind_is_named(self):
        self.table["messages"][0]["tests"] = []
        self.table["messages"][1]["logged"] = "LOUD"
        self.assertEqual(len(self.complaints()), 2)

    def test_text_that_is_no_message_needs_a_reason(self):
        self.table["others"][0]["reason"] = ""
        self.assertEqual(self.complaints(), [f'{SOURCE_NAME}: "key" is listed as no message, without a reason'])


class LiteralsTest(unittest.TestCase):
    def texts(self, source):
        return [text for _, text in check_messages.literals(source)]

    def test_escapes_are_what_they_stand_for(self):
        self.assertEqual(self.texts(r'"a\"b\\c\n\t\x41\101A"'), ['a"b\\c\n\tAAA'])

    def test_prefixes_and_delimiters_do_not_belong_to_the_text(self):
        self.assertEqual(self.texts('f(u8"a", L"b", R"x(c)" not yet)x", "");'), ["a", "b", 'c)" not yet', ""])

    def test_neighbours_are_joined_across_lines_and_comments_only(self):
        self.assertEqual(self.texts('"a"\n  // "x"\n "b" /* "y" */ R"(c)", "d" + "e"'), ["abc", "d", "e"])

    def test_quotes_in_characters_and_comments_begin_nothing(self):
        self.assertEqual(self.texts("'\"' \"a\" '\\'' // \"b\n\"c\""), ["a", "c"])

    def test_lines_that_go_on_are_one(self):
        self.assertEqual(self.texts('#define F "a" \\\n "b"\n// comment \\\n "c"\n"d"'), ["ab", "d"])


if __name__ == "__main__":
    unittest.main()
