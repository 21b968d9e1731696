// The checked files: envelope, container file and record table.
#include "platform/files/ByteStream.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/KVContainerFile.h"
#include "platform/files/oledb.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <zlib.h>

#include <cmath>
#include <limits>

using namespace cutroom;
using cutroom::test::TempFolder;
using testing::HasSubstr;

namespace {

constexpr KVContainerFile::ItemField kFields[] = {
    {"Cookie", 'a'}, {"Pos", 'a'}, {"Time", 'f'}, {"Mark", 'f'}, {"", 0}};

KVContainerFile::Writer sampleWriter() {
    KVContainerFile::Writer writer(kFields);
    writer.setName("Ünit\none");
    writer.setPermanent(true);
    writer.addAttribute("Size", "(1,1)");
    writer.addAttribute("Size", "(640,480)");
    writer.addAttribute("odd \\name", " text\n\\n ");
    writer.addAttribute("ModTime", "1700000000");
    writer.addItem("E0000000000001");
    writer.setField(1, "(1.5,-2)");
    writer.setField(2, 12.25);
    writer.setField(3, -1.0);
    writer.addItem("");
    writer.setField(3, std::numeric_limits<double>::infinity());
    writer.addItem(std::string(300, 'x'));
    return writer;
}

void expectSample(const KVContainerFile::Reader& reader) {
    ASSERT_TRUE(reader.valid()) << reader.status().text();
    EXPECT_EQ(reader.getName(), "Ünit\none");
    EXPECT_TRUE(reader.getPermanent());
    EXPECT_EQ(reader.getAttribute("Size"), "(640,480)");
    EXPECT_EQ(reader.getAttribute("odd \\name"), " text\n\\n ");
    EXPECT_EQ(reader.getIntAttribute("ModTime"), 1700000000);
    EXPECT_EQ(reader.getIntAttribute("Size", 4), 4);
    EXPECT_FALSE(reader.hasAttribute("size"));
    EXPECT_EQ(reader.getFieldIndex("ID"), -1);
    ASSERT_EQ(reader.getNumItems(), 3u);
    EXPECT_EQ(reader.getText(0, 0), "E0000000000001");
    EXPECT_EQ(reader.getText(0, 1), "(1.5,-2)");
    EXPECT_EQ(reader.getDouble(0, 2), 12.25);
    EXPECT_EQ(reader.getDouble(0, 3, 9), -1.0);
    EXPECT_EQ(reader.getText(1, 0, "none"), "");
    EXPECT_EQ(reader.getText(1, 1, "none"), "none");
    EXPECT_EQ(reader.getDouble(1, 2, 7), 7);
    EXPECT_EQ(reader.getDouble(1, 3), std::numeric_limits<double>::infinity());
    EXPECT_EQ(reader.getText(2, 0).size(), 300u);
    EXPECT_EQ(reader.getText(0, 2, "a number"), "a number");
    EXPECT_EQ(reader.getDouble(0, 0, 3), 3);
    for (const int field : {-1, 4, 64})
        EXPECT_EQ(reader.getText(0, field, "no field"), "no field");
    EXPECT_EQ(reader.getText(3, 0, "no item"), "no item");
    std::vector<std::string> walked;
    const Status all = reader.forEachItem([&](const KVContainerFile::Reader::Value* item) {
        walked.push_back(format("%zu %zu %d %d", item[0].text.size(), item[1].text.size(),
                                item[2].isNumber, item[3].isNumber));
    });
    EXPECT_TRUE(all.ok()) << all.text();
    EXPECT_EQ(walked, (std::vector<std::string>{"14 8 1 1", "0 0 0 1", "300 0 0 0"}));
}

oledb sampleTable() {
    oledb table;
    table.setParameter("Version", "6");
    for (const char* field : {"id", "name", "children"})
        table.addField(field);
    table.addRecord();
    table.setField(0, "G1");
    table.setField(2, "E1|E2");
    table.addRecord();
    table.setField(1, "näme");
    return table;
}

} // namespace

TEST(CheckedFile, RoundTripsAndTellsWhatItIs) {
    const std::string payload("a\0b\n", 4);
    const std::string bytes = CheckedFile::wrap("edit", 3, payload);
    EXPECT_THAT(bytes, testing::StartsWith("CUTROOM edit 3 4 "));
    const Result<CheckedFile::View> view = CheckedFile::open(bytes, "edit", 3, "f");
    ASSERT_TRUE(view.ok());
    EXPECT_EQ(view->payload, payload);
    EXPECT_EQ(view->version, 3u);
    EXPECT_EQ(bytes.substr(view->offset), payload);
    const Status newer = CheckedFile::open(bytes, "edit", 2, "f").status();
    EXPECT_EQ(newer.code(), StatusCode::failed);
    EXPECT_THAT(newer.message(), HasSubstr("format 3; this one knows 2"));
    const Status other = CheckedFile::open(bytes, "bin", 3, "f").status();
    EXPECT_EQ(other.message(), "is a file of the kind \"edit\", not \"bin\"");
    const TempFolder folder;
    ASSERT_TRUE(CheckedFile::save(folder / "x", "edit", 3, payload).ok());
    EXPECT_EQ(CheckedFile::load(folder / "x", "edit", 3)->payload(), payload);
    EXPECT_EQ(CheckedFile::load(folder / "y", "edit", 3).status().code(), StatusCode::notFound);
}

TEST(CheckedFile, HasTheStandardChecksumWhateverTheLengthAndPlace) {
    std::string bytes(600, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * i * 31 + i / 7);
    EXPECT_EQ(checksum("123456789"), 0xCBF43926u);
    for (unsigned size = 0; size + 3 < bytes.size(); ++size) {
        const char* const start = bytes.data() + size % 3;
        const auto before = static_cast<std::uint32_t>(size * 0x01234567u);
        ASSERT_EQ(checksum({start, size}, before),
                  ::crc32(before, reinterpret_cast<const Bytef*>(start), size));
    }
}

TEST(ByteStream, GivesBackEveryValueAndFailsOnceAtTheEnd) {
    ByteWriter out;
    out.i64(INT64_MIN);
    out.f64(-0.0);
    out.text("text");
    for (const std::uint64_t value : {127ull, 128ull, 16384ull, ~0ull})
        out.varint(value);
    ByteReader in(out.bytes());
    EXPECT_EQ(in.i64(), INT64_MIN);
    EXPECT_TRUE(std::signbit(in.f64()));
    EXPECT_EQ(in.text(), "text");
    for (const std::uint64_t value : {127ull, 128ull, 16384ull, ~0ull})
        EXPECT_EQ(in.varint(), value);
    EXPECT_TRUE(in.ok() && in.atEnd());
    EXPECT_EQ(in.u32(), 0u);
    EXPECT_FALSE(in.ok());
    EXPECT_EQ(in.damage("f", 100, "why").line(), static_cast<long>(100 + out.bytes().size()));
}

TEST(ContainerFile, IsSavedAndReadAsTheFirstVersionWas) {
    const TempFolder folder;
    const std::string path = folder / "G0000000000001.bin";
    ASSERT_TRUE(sampleWriter().save(toWide(path)).ok());
    EXPECT_EQ(readFile(path).value(),
              readFile(CUTROOM_TEST_DATA "/formats/container-1.bin").value());
    expectSample(KVContainerFile::Reader(toWide(path)));
    expectSample(KVContainerFile::Reader(path));
}

TEST(ContainerFile, KeepsWhatTheWriterDoesNotKnow) {
    constexpr KVContainerFile::ItemField kLaterFields[] = {
        {"Cookie", 'a'}, {"Colour", 'z'}, {"Time", 'f'}, {nullptr, 0}};
    const TempFolder folder;
    KVContainerFile::Writer later(kLaterFields);
    later.setPermanent(true);
    later.addAttribute("Size", "(9,9)");
    later.addAttribute("Mood", "blue");
    for (const char* cookie : {"E1", "E2", "E3"}) {
        later.addItem(cookie);
        later.setField(1, std::string("colour of ") + cookie);
        later.setField(2, 1.0);
    }
    ASSERT_TRUE(later.save(folder / "bin").ok());

    const KVContainerFile::Reader old(folder / "bin");
    KVContainerFile::Writer writer(kFields);
    writer.keepUnknown(old);
    writer.addAttribute("Size", "(1,2)");
    for (const char* cookie : {"E3", "E4", "E1"}) {
        writer.addItem(cookie);
        writer.setField(2, 7.0);
    }
    ASSERT_TRUE(writer.save(folder / "bin").ok());
    const KVContainerFile::Reader reader(folder / "bin");
    EXPECT_TRUE(reader.getPermanent());
    EXPECT_EQ(reader.getAttribute("Size"), "(1,2)");
    EXPECT_EQ(reader.getAttribute("Mood"), "blue");
    EXPECT_EQ(reader.getDouble(0, reader.getFieldIndex("Time")), 7.0);
    std::vector<std::string> colours;
    for (std::size_t item = 0; item < reader.getNumItems(); ++item)
        colours.emplace_back(reader.getText(item, reader.getFieldIndex("Colour"), "none"));
    EXPECT_THAT(colours, testing::ElementsAre("colour of E3", "none", "colour of E1"));
}

TEST(ContainerFile, ThatCannotBeReadAnswersAsEmpty) {
    const KVContainerFile::Reader none(std::string("/nonexistent/x"));
    EXPECT_FALSE(none.valid());
    EXPECT_EQ(none.status().code(), StatusCode::notFound);
    EXPECT_EQ(none.getName(), "");
    EXPECT_EQ(none.getNumItems(), 0u);
    EXPECT_EQ(none.getText(0, 0, "x"), "x");
    EXPECT_FALSE(KVContainerFile::Reader(L"\xD800").valid());
    EXPECT_FALSE(KVContainerFile::Writer(kFields).save(L"\xD800").ok());
}

TEST(ContainerFile, IsNotWrittenWhenItCouldNotBeReadAgain) {
    const TempFolder folder;
    KVContainerFile::Writer writer(kFields);
    for (const std::size_t size : {std::size_t{5}, std::size_t{1} << 31}) {
        writer.addItem(std::string_view("sound", size)); // of too long a text only the size is read
        EXPECT_EQ(writer.check("f").ok(), size == 5);
        EXPECT_EQ(writer.save(folder / "f").ok(), size == 5);
    }
    writer.addItem("after it");
    EXPECT_EQ(KVContainerFile::Reader(folder / "f").getNumItems(), 1u);
}

TEST(ContainerFile, NoticesEveryTruncationAndFlippedBit) {
    const std::string bytes = sampleWriter().bytes();
    const auto expectRefused = [&](const std::string& damaged) {
        RecordFile table;
        const Status status = table.parse(damaged, kContainerKind, "f");
        ASSERT_EQ(status.code(), StatusCode::damaged) << damaged;
        EXPECT_EQ(status.file(), "f");
        EXPECT_FALSE(status.message().empty());
        EXPECT_LE(static_cast<std::size_t>(status.line()), bytes.size() + 1);
    };
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        expectRefused(bytes.substr(0, at));
        for (int bit = 0; bit < 8; ++bit) {
            std::string flipped = bytes;
            flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
            expectRefused(flipped);
        }
    }
    expectRefused(bytes + "x");
}

TEST(ContainerFile, RefusesPayloadsThatOnlyTheChecksumFits) {
    const std::string bad[] = {
        "",
        "records 0\n",
        "\n",
        "field a\nrecords 1\n\n",
        "records 1\n\n",
        "field a x\nrecords 2\n\n\x01\x01y",
        "field a x\nrecords 1\n\n\x02",
        "field a x\nrecords 1\n\n\x01\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\x01",
        "field f x\nrecords 1\n\n\x01"
        "1234567",
        "field a x\nrecords 1\n\n\x01\x01yz",
        "field a x\nrecords 18446744073709551615\n\n",
        "field a x\nrecords -1\n\n",
        "field ab x\nrecords 0\n\n",
        "field a x\\q\nrecords 0\n\n",
        "attribute a \\\nrecords 0\n\n",
        "records 0\nfield a x\n\n",
    };
    for (const std::string& payload : bad) {
        const std::string bytes = CheckedFile::wrap(kContainerKind, 1, payload);
        RecordFile table, walked;
        const Status status = table.parse(bytes, kContainerKind, "f");
        EXPECT_EQ(status.code(), StatusCode::damaged) << payload;
        EXPECT_GT(status.line(), 0) << payload;
        Status inOrder = walked.parse(bytes, kContainerKind, "f", RecordFile::Access::inOrder);
        if (inOrder) {
            RecordFile::Walk walk(walked);
            while (walk.next())
                ;
            inOrder = walk.status("f");
        }
        EXPECT_EQ(inOrder.text(), status.text()) << payload;
    }
    std::string fields;
    for (int i = 0; i < 65; ++i)
        fields += "field a f\n";
    RecordFile table;
    EXPECT_FALSE(table.parse(CheckedFile::wrap("t", 1, fields + "records 0\n\n"), "t", "f").ok());
}

TEST(ContainerFile, TakesItsCookieFromTheFileName) {
    const Cookie bin('G', 12345), strip('V', 7, 2);
    const struct {
        std::wstring name;
        Cookie cookie;
    } rows[] = {
        {L"/p/groups/" + bin.asWString() + L".bin", bin},
        {bin.asWString(), bin},
        {strip.asWString(), strip},
        {strip.asWString() + L".bin", strip},
        {L"/p/other.bin", Cookie()},
        {L"", Cookie()},
        {bin.asWString() + L"/x.bin", Cookie()},
        {bin.asWString() + L".bin.bak", Cookie()},
    };
    for (const auto& row : rows)
        EXPECT_EQ(KVContainerFile::getCookieFromFilename(row.name), row.cookie) << toUtf8(row.name);
}

TEST(RecordTable, IsSavedAndReadAsTheFirstVersionWas) {
    const TempFolder folder;
    ASSERT_TRUE(sampleTable().save(toWide(folder / "cache.odb")).ok());
    EXPECT_EQ(readFile(folder / "cache.odb").value(),
              readFile(CUTROOM_TEST_DATA "/formats/table-1.odb").value());
    oledb table;
    ASSERT_TRUE(table.open(toWide(folder / "cache.odb")).ok());
    EXPECT_EQ(table.getParameter("Version"), "6");
    EXPECT_EQ(table.getParameter("version"), std::nullopt);
    EXPECT_EQ(table.findField("children"), 2);
    EXPECT_EQ(table.findField("ModTime"), -1);
    table.addRecord(); // a table that was read goes on
    table.setField(1, "third");
    ASSERT_TRUE(table.save(folder / "again.odb").ok());
    ASSERT_TRUE(table.open(folder / "again.odb").ok());
    std::string fields;
    for (std::size_t record = 0; record <= table.getNumRecords(); ++record)
        for (const int field : {0, 1, 2})
            fields.append(table.getField(record, field)) += ',';
    EXPECT_EQ(fields, "G1,,E1|E2,,näme,,,third,,,,,");
    EXPECT_EQ(table.open(folder / "none").code(), StatusCode::notFound);
    EXPECT_EQ(table.getNumRecords(), 0u);
}

TEST(RecordFileProperty, WhatIsSavedIsLoadedAndSavedAgainAsTheSameBytes) {
    constexpr std::size_t kFieldsOfEach = 10;
    const auto isText = [](std::size_t field) { return field % 3 != 0; };
    EXPECT_TRUE(rc::check([&](const std::vector<std::vector<std::string>>& rows,
                              const std::map<std::string, std::string>& attributes) {
        RecordFile table, again;
        for (const auto& [name, text] : attributes)
            table.setAttribute(name, text);
        for (std::size_t i = 0; i < kFieldsOfEach; ++i)
            table.addField("field " + std::to_string(i), isText(i) ? kTextField : kDoubleField);
        for (const auto& row : rows) {
            table.addRecord();
            for (std::size_t i = 0; i < std::min(row.size(), kFieldsOfEach); ++i)
                if (const int field = static_cast<int>(i); isText(i))
                    table.setText(field, row[i]);
                else
                    table.setDouble(field, static_cast<double>(row[i].size()));
        }
        RC_ASSERT(again.parse(table.bytes("t"), "t", "f").ok());
        RC_ASSERT(again.bytes("t") == table.bytes("t"));
        RC_ASSERT(again.size() == rows.size());
        for (const auto& [name, text] : attributes)
            RC_ASSERT(*again.attribute(name) == text);
        for (std::size_t i = 0; i < rows.size(); ++i)
            for (std::size_t j = 0; j < kFieldsOfEach; ++j) {
                const int field = static_cast<int>(j);
                const std::optional<std::string> set =
                    j < rows[i].size() ? std::optional(rows[i][j]) : std::nullopt;
                if (isText(j))
                    RC_ASSERT(again.text(i, field, "-") == set.value_or("-"));
                else
                    RC_ASSERT(again.number(i, field, -1) ==
                              (set ? static_cast<double>(set->size()) : -1));
            }
    }));
}
