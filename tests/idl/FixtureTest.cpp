// SPDX-License-Identifier: Apache-2.0
// Whole files. Each says in lines that begin with "// expects:" what is complained about, and where.
#include "Idl.hpp"

#include <plex/idl/Generate.hpp>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace plex::test
{

namespace
{

namespace fs = std::filesystem;

constexpr std::string_view mark = "// expects: ";

std::vector<fs::path> filesIn(const std::string& folder)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(fs::path(PLEX_TEST_IDL_DIR) / folder)) {
        if (entry.path().extension() == ".idl") {
            files.push_back(entry.path());
        }
    }
    std::ranges::sort(files);
    return files;
}

std::vector<std::string> expectedIn(const fs::path& path)
{
    std::ifstream file(path);
    std::vector<std::string> expected;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(mark)) {
            expected.push_back(line.substr(mark.size()));
        }
    }
    return expected;
}

/// "line:column: error: message", with the name of the file before it where that is another one.
std::vector<std::string> foundIn(const Diagnostics& diagnostics, const fs::path& path)
{
    std::vector<std::string> found;
    for (const Diagnostic& diagnostic : diagnostics.all()) {
        const std::string text = toString(diagnostic);
        const bool isOther = diagnostic.file != path.string();
        const std::size_t begin = isOther ? text.rfind('/', text.find(':')) + 1 : diagnostic.file.size() + 1;
        found.push_back(text.substr(begin, text.find('\n') - begin));
    }
    return found;
}

class Fixture : public testing::TestWithParam<fs::path>
{
};

struct FileName {
    std::string operator()(const testing::TestParamInfo<fs::path>& info) const
    {
        return info.param.stem().string();
    }
};

class AcceptedFile : public Fixture
{
};

class RefusedFile : public Fixture
{
};

TEST_P(AcceptedFile, HasAModelAndTheWarningsThatItExpects)
{
    const ParseResult result = parseFile(GetParam().string());
    EXPECT_EQ(foundIn(result.diagnostics, GetParam()), expectedIn(GetParam()));
    EXPECT_TRUE(result.model.has_value());
}

TEST_P(RefusedFile, HasTheErrorsThatItExpectsAndNoModel)
{
    const ParseResult result = parseFile(GetParam().string());
    EXPECT_EQ(foundIn(result.diagnostics, GetParam()), expectedIn(GetParam()));
    EXPECT_GT(result.diagnostics.errors(), 0U);
    EXPECT_FALSE(result.model.has_value());
}

/// Whatever is generated must compile; files for which nothing can be generated are few.
TEST_P(AcceptedFile, IsAmongTheCompiledOnesIfSomethingIsGenerated)
{
    const ParseResult result = parseFile(GetParam().string());
    ASSERT_TRUE(result.model.has_value());
    const bool isGenerated = generate(*result.model).diagnostics.errors() == 0;
    const std::string compiled = "," PLEX_TEST_COMPILED ",";
    EXPECT_EQ(compiled.find("," + GetParam().stem().string() + ",") != std::string::npos, isGenerated);
}

INSTANTIATE_TEST_SUITE_P(Idl, AcceptedFile, testing::ValuesIn(filesIn("accepted")), FileName());
INSTANTIATE_TEST_SUITE_P(Idl, RefusedFile, testing::ValuesIn(filesIn("refused")), FileName());

} // namespace

} // namespace plex::test
