// The checked files: envelope, container file and record table.
#include "platform/files/ByteStream.h"
#include "platform/files/CheckedFile.h"
#include "platform/files/KVContainerFile.h"
#include "platform/files/oledb.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

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
    EXPECT_EQ(reader.getIntAttribute("absent", 5), 5);
    EXPECT_FALSE(reader.hasAttribute("size"));
    EXPECT_EQ(reader.getFieldIndex("Time"), 2);
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
    EXPECT_EQ(reader.getText(0, 2, "kind"), "kind"); // a number
    EXPECT_EQ(reader.getDouble(0, 0, 3), 3);
    for (const int field : {-1, 4, 64})
        EXPECT_EQ(reader.getText(0, field, "no field"), "no field");
    EXPECT_EQ(reader.getText(3, 0, "no item"), "no item");
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

// Damages `bytes` at every place, in every bit and by every truncation.
void expectEveryDamageIsNoticed(const std::string& bytes,
                                const std::function<Status(const std::string&)>& read) {
    ASSERT_TRUE(read(bytes).ok());
    const auto check = [&](const std::string& damaged, std::size_t at) {
        const Status status = read(damaged);
        ASSERT_EQ(status.code(), StatusCode::damaged) << at;
        EXPECT_FALSE(status.file().empty()) << at;
        EXPECT_FALSE(status.message().empty()) << at;
        EXPECT_LE(static_cast<std::size_t>(status.line()), bytes.size() + 1) << at;
    };
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        check(bytes.substr(0, at), at);
        for (int bit = 0; bit < 8; ++bit) {
            std::string flipped = bytes;
            flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
            check(flipped, at);
        }
    }
    check(bytes + "x", bytes.size());
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

// A bit at a time, as the standard defines it.
std::uint32_t slowChecksum(std::string_view data, std::uint32_t before) {
    std::uint32_t rest = ~before;
    for (const char c : data) {
        rest ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            rest = (rest >> 1) ^ ((rest & 1) != 0 ? 0xEDB88320u : 0u);
    }
    return ~rest;
}

TEST(CheckedFile, HasTheStandardChecksumWhateverTheLengthAndPlace) {
    std::string bytes(600, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * i * 31 + i / 7);
    EXPECT_EQ(checksum("123456789"), 0xCBF43926u);
    for (std::size_t size = 0; size + 3 < bytes.size(); ++size) {
        const std::string_view part = std::string_view(bytes).substr(size % 3, size);
        const auto before = static_cast<std::uint32_t>(size * 0x01234567u);
        ASSERT_EQ(checksum(part, before), slowChecksum(part, before)) << size;
    }
}

TEST(CheckedFile, NoticesEveryTruncationAndFlippedBit) {
    expectEveryDamageIsNoticed(CheckedFile::wrap("edit", 3, "payload\n"), [](const auto& bytes) {
        return CheckedFile::open(bytes, "edit", 3, "f").status();
    });
}

TEST(ByteStream, GivesBackEveryValueAndFailsOnceAtTheEnd) {
    ByteWriter out;
    const std::uint64_t varints[] = {0, 127, 128, 16383, 16384, UINT64_MAX};
    for (const std::uint64_t value : varints)
        out.varint(value);
    out.u8(255);
    out.u32(0x01020304);
    out.i64(INT64_MIN);
    out.f64(-0.0);
    out.text("text");
    ByteReader in(out.bytes());
    for (const std::uint64_t value : varints)
        EXPECT_EQ(in.varint(), value);
    EXPECT_EQ(in.u8(), 255);
    EXPECT_EQ(in.u32(), 0x01020304u);
    EXPECT_EQ(in.i64(), INT64_MIN);
    EXPECT_TRUE(std::signbit(in.f64()));
    EXPECT_EQ(in.text(), "text");
    EXPECT_TRUE(in.ok() && in.atEnd());
    EXPECT_EQ(in.u32(), 0u);
    EXPECT_FALSE(in.ok());
    EXPECT_EQ(in.position(), out.bytes().size());
    EXPECT_EQ(in.damage("f", 100, "why").line(), static_cast<long>(100 + out.bytes().size()));
    for (const std::string& bad : {std::string(10, '\xFF'), std::string("\x7F") + "short"}) {
        ByteReader reader(bad);
        EXPECT_EQ(reader.count(1), 0u);
        EXPECT_EQ(reader.text(), "");
        EXPECT_FALSE(reader.ok());
    }
}

TEST(ContainerFile, RoundTripsAndSavesTheSameBytesAgain) {
    const TempFolder folder;
    const std::string path = folder / "G0000000000001.bin";
    ASSERT_TRUE(sampleWriter().save(toWide(path)).ok());
    expectSample(KVContainerFile::Reader(toWide(path)));
    EXPECT_EQ(readFile(path).value(), sampleWriter().bytes());
    const test::CommaLocale locale;
    ASSERT_TRUE(locale.active());
    EXPECT_EQ(readFile(path).value(), sampleWriter().bytes());
    expectSample(KVContainerFile::Reader(path));
}

TEST(ContainerFile, OfTheFirstVersionStillLoads) {
    const std::string path = CUTROOM_TEST_DATA "/formats/container-1.bin";
    expectSample(KVContainerFile::Reader(path));
    EXPECT_EQ(sampleWriter().bytes(), readFile(path).value());
}

TEST(ContainerFile, KeepsWhatTheWriterDoesNotKnow) {
    constexpr KVContainerFile::ItemField kLaterFields[] = {
        {"Cookie", 'a'}, {"Colour", 'z'}, {"Time", 'f'}, {"Weight", 'f'}, {nullptr, 0}};
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
    later.setField(3, 2.5);
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
    const int colour = reader.getFieldIndex("Colour");
    EXPECT_EQ(reader.getText(0, colour), "colour of E3");
    EXPECT_EQ(reader.getDouble(0, reader.getFieldIndex("Weight")), 2.5);
    EXPECT_EQ(reader.getDouble(0, reader.getFieldIndex("Time")), 7.0);
    EXPECT_EQ(reader.getText(1, colour, "none"), "none");
    EXPECT_EQ(reader.getText(2, colour), "colour of E1");
    EXPECT_EQ(writer.bytes(), readFile(folder / "bin").value());
}

TEST(ContainerFile, ThatCannotBeReadAnswersAsEmpty) {
    const KVContainerFile::Reader none(std::string("/nonexistent/x"));
    EXPECT_FALSE(none.valid());
    EXPECT_EQ(none.status().code(), StatusCode::notFound);
    EXPECT_EQ(none.getName(), "");
    EXPECT_FALSE(none.getPermanent());
    EXPECT_EQ(none.getNumItems(), 0u);
    EXPECT_EQ(none.getText(0, 0, "x"), "x");
    EXPECT_FALSE(KVContainerFile::Reader(L"\xD800").valid());
    EXPECT_FALSE(KVContainerFile::Writer(kFields).save(L"\xD800").ok());
}

TEST(ContainerFile, NoticesEveryTruncationAndFlippedBit) {
    expectEveryDamageIsNoticed(sampleWriter().bytes(), [](const std::string& bytes) {
        RecordFile table;
        return table.parse(bytes, kContainerKind, "f");
    });
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
        RecordFile table;
        const Status status =
            table.parse(CheckedFile::wrap(kContainerKind, 1, payload), kContainerKind, "f");
        EXPECT_EQ(status.code(), StatusCode::damaged) << payload;
        EXPECT_GT(status.line(), 0) << payload;
    }
    std::string fields;
    for (int i = 0; i < 65; ++i)
        fields += "field a f\n";
    RecordFile table;
    EXPECT_FALSE(table.parse(CheckedFile::wrap("t", 1, fields + "records 0\n\n"), "t", "f").ok());
}

TEST(ContainerFile, TakesAtMost64BytesAnItem) {
    KVContainerFile::Writer writer(kFields);
    for (int i = 0; i < 1000; ++i) {
        writer.addItem("E0123456789ABC");
        writer.setField(1, "(1234.5678,-1234.5678)");
        writer.setField(2, i * 0.1);
        writer.setField(3, -1.0);
    }
    EXPECT_LE(writer.bytes().size(), 1000u * 64);
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

TEST(RecordTable, RoundTrips) {
    const TempFolder folder;
    ASSERT_TRUE(sampleTable().save(toWide(folder / "cache.odb")).ok());
    oledb table;
    ASSERT_TRUE(table.open(toWide(folder / "cache.odb")).ok());
    EXPECT_EQ(table.getParameter("Version"), "6");
    EXPECT_EQ(table.getParameter("version"), std::nullopt);
    ASSERT_EQ(table.getNumRecords(), 2u);
    EXPECT_EQ(table.findField("children"), 2);
    EXPECT_EQ(table.findField("ModTime"), -1);
    EXPECT_EQ(table.getField(0, 2), "E1|E2");
    EXPECT_EQ(table.getField(0, 1), "");
    EXPECT_EQ(table.getField(1, 1), "näme");
    EXPECT_EQ(table.getField(2, 0), "");
    table.addRecord(); // a table that was read goes on
    table.setField(1, "third");
    ASSERT_TRUE(table.save(folder / "again.odb").ok());
    ASSERT_TRUE(table.open(folder / "again.odb").ok());
    EXPECT_EQ(table.getField(0, 0), "G1");
    EXPECT_EQ(table.getField(2, 1), "third");
    EXPECT_EQ(table.open(folder / "none").code(), StatusCode::notFound);
    EXPECT_EQ(table.getNumRecords(), 0u);
}

TEST(RecordTable, OfTheFirstVersionStillLoads) {
    const std::string path = CUTROOM_TEST_DATA "/formats/table-1.odb";
    const TempFolder folder;
    oledb table;
    ASSERT_TRUE(table.open(path).ok());
    EXPECT_EQ(table.getField(1, 1), "näme");
    ASSERT_TRUE(table.save(folder / "again").ok());
    EXPECT_EQ(readFile(folder / "again").value(), readFile(path).value());
}

TEST(RecordTable, NoticesEveryTruncationAndFlippedBit) {
    const TempFolder folder;
    ASSERT_TRUE(sampleTable().save(folder / "t").ok());
    expectEveryDamageIsNoticed(readFile(folder / "t").value(), [](const std::string& bytes) {
        RecordFile table;
        return table.parse(bytes, kTableKind, "f");
    });
}

TEST(RecordFileProperty, WhatIsSavedIsLoadedAndSavedAgainAsTheSameBytes) {
    EXPECT_TRUE(rc::check([](const std::vector<std::vector<std::string>>& rows,
                             const std::map<std::string, std::string>& attributes) {
        RecordFile table;
        for (const auto& [name, text] : attributes)
            table.setAttribute(name, text);
        for (int i = 0; i < 10; ++i)
            table.addField("field " + std::to_string(i), i % 3 ? kTextField : kDoubleField);
        for (const auto& row : rows) {
            table.addRecord();
            for (std::size_t i = 0; i < std::min<std::size_t>(row.size(), 10); ++i) {
                if (i % 3)
                    table.setText(static_cast<int>(i), row[i]);
                else
                    table.setDouble(static_cast<int>(i), static_cast<double>(row[i].size()));
            }
        }
        const std::string bytes = table.bytes("t");
        RecordFile again;
        RC_ASSERT(again.parse(bytes, "t", "f").ok());
        RC_ASSERT(again.bytes("t") == bytes);
        RC_ASSERT(again.size() == rows.size());
        for (const auto& [name, text] : attributes)
            RC_ASSERT(*again.attribute(name) == text);
        for (std::size_t i = 0; i < rows.size(); ++i)
            for (std::size_t j = 0; j < 10; ++j) {
                const int field = static_cast<int>(j);
                const bool there = j < rows[i].size();
                if (j % 3)
                    RC_ASSERT(again.text(i, field, "-") == (there ? rows[i][j] : "-"));
                else
                    RC_ASSERT(again.number(i, field, -1) ==
                              (there ? static_cast<double>(rows[i][j].size()) : -1));
            }
    }));
}
