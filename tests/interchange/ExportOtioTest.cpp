// Edits as OTIO: what came in comes out, and what was changed since is told.
#include "interchange/Exporter.h"
#include "interchange/OtioReader.h"
#include "tests/interchange/Corpus.h"
#include "tests/interchange/ImportFixture.h"
#include "tests/interchange/OtioText.h"

#include <gmock/gmock.h>

namespace {

using namespace cutroom;
using namespace cutroom::test;
using namespace otiotext;

std::string exported(const EditPtr& edit) {
    const auto file = exportOtio(edit);
    EXPECT_TRUE(file.ok()) << file.status().text();
    return file.ok() ? file->text : std::string();
}

class ExportOtioCorpus : public ImportFixture, public testing::WithParamInterface<std::string> {};

TEST_P(ExportOtioCorpus, WhatCameInComesOut) {
    const ImportReport report = import(corpus::folder() + GetParam());
    ASSERT_EQ(report.edits.size(), 1u);
    reopen();
    const std::string text = exported(EditPtr(report.edits[0].edit));
    const ImportReport again = import(write("again.otio", text));
    ASSERT_EQ(again.edits.size(), 1u);
    if (const char* keep = std::getenv("KEEP"))
        std::ofstream(std::string(keep) + "/" + corpus::testName(GetParam()) + ".otio") << text;
    EXPECT_EQ(exported(EditPtr(again.edits[0].edit)), text);
}

INSTANTIATE_TEST_SUITE_P(Files, ExportOtioCorpus, testing::ValuesIn(corpus::files("otio")),
                         [](const auto& file) { return corpus::testName(file.param); });

} // namespace
