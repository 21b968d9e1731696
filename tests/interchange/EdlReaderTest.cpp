#include "interchange/EdlReader.h"
#include "interchange/EdlTracks.h"
#include "platform/base/Strings.h"
#include "platform/base/Timecode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace cutroom;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const Kv::FrameRate k24(24), k25(25), k30(30), k2997(30000, 1001);

Timeline read(const std::string& text, std::optional<Kv::FrameRate> rate = k25) {
    auto all = readEdl(text, "list.edl", rate);
    EXPECT_TRUE(all.ok()) << all.status().text();
    return all.ok() ? std::move(all->front()) : Timeline();
}

EdlList lines(const std::string& text) {
    bool latin1 = false;
    return parseEdlLines(edlLines(text, &latin1));
}

// One event on V; seconds of record, and of source from 1 h on.
std::string event(int number, int recordIn, int recordOut, const std::string& reel = "R1",
                  const std::string& rest = "C       ", const std::string& channel = "V") {
    return format("%03d  %s %s %s 01:00:%02d:00 01:00:%02d:00 00:00:%02d:00 00:00:%02d:00\n",
                  number, reel.c_str(), channel.c_str(), rest.c_str(), recordIn, recordOut,
                  recordIn, recordOut);
}

std::string layout(const Track& track, const Kv::FrameRate& rate) {
    std::string text;
    for (const Item& item : track.items)
        text += format("%s%c %s %lld+%lld", text.empty() ? "" : ", ",
                       "CGTN"[static_cast<int>(item.type)], item.name.c_str(),
                       static_cast<long long>(rate.flicksToFrameNearest(item.start)),
                       static_cast<long long>(rate.flicksToFrameNearest(item.duration)));
    return text;
}

std::string layout(const Timeline& timeline) {
    std::string text;
    for (const Track& track : timeline.tracks)
        text += (text.empty() ? "" : " | ") + track.name + ": " + layout(track, timeline.rate.rate);
    return text;
}

struct LineRow {
    const char* line;
    const char* number;
    const char* reel;
    const char* channel;
    const char* kind;
    int duration;
};

TEST(EdlLines, AreTakenApartFromTheRight) {
    const std::string tail = " 01:00:00:00 01:00:01:00 00:00:00:00 00:00:01:00";
    const LineRow rows[] = {
        {"001  TST      V     C       ", "001", "TST", "V", "C", 0},
        {"000123 A_0031C010_241010_133208_h1C2T V D 010", "000123",
         "A_0031C010_241010_133208_h1C2T", "V", "D", 10},
        {"1\tAX\tAA/V\tC", "1", "", "AA/V", "C", 0},
        {"002        BL V     W001    025", "002", "BL", "V", "W001", 25},
        {"003  MY REEL 7 A2 C", "003", "MY REEL 7", "A2", "C", 0},
        {"004 R V K B", "004", "R", "V", "K B", 0},
        {"005 R V K O 012", "005", "R", "V", "K O", 12},
        {"006 R V K 000", "006", "R", "V", "K", 0},
        {"007 V C", "007", "", "V", "C", 0},
    };
    for (const LineRow& row : rows) {
        SCOPED_TRACE(row.line);
        const EdlList list = lines(row.line + tail + "  \r\n");
        ASSERT_EQ(list.events.size(), 1u);
        const EdlEvent& event = list.events[0];
        EXPECT_EQ(event.number, row.number);
        EXPECT_EQ(event.reel, row.reel);
        EXPECT_EQ(event.channel, row.channel);
        EXPECT_EQ(event.kindText, row.kind);
        EXPECT_EQ(event.duration, row.duration);
        EXPECT_EQ(event.timecodes, tail.substr(1));
    }
}

TEST(EdlLines, ThatAreNoEventsAreCountedAndSaid) {
    const std::string bad = "002 R V C 01:00:00:00 01:00:61:00 00:00:00:00 00:00:01:00\n";
    const EdlList list = lines("EP 107\n" + event(1, 0, 1) + bad + "WHAT IS THIS\n" + bad);
    EXPECT_EQ(list.events.size(), 1u);
    EXPECT_THAT(list.warnings,
                ElementsAre("lines that look like events but cannot be read: 2 (first: line 3)",
                            "lines of no known form left out: 2 (first: line 1)"));
}

TEST(EdlLines, EndInEveryWayAndInEveryEncoding) {
    const std::string body = "TITLE: X\n" + event(1, 0, 1) + "* FROM CLIP NAME: a\n";
    const auto with = [&](const std::string& end) {
        std::string text;
        for (const std::string& line : split(body, '\n'))
            text += line + end;
        return text;
    };
    const std::string rows[] = {body, with("\r\n"), with("\r"), "\xEF\xBB\xBF" + body,
                                body + "\x1A\x1A" + std::string(20, '\0')};
    for (const std::string& text : rows) {
        const Timeline timeline = read(text);
        EXPECT_EQ(timeline.name, "X");
        EXPECT_EQ(layout(timeline), "V: C a 0+25");
        EXPECT_THAT(timeline.warnings, IsEmpty());
    }
    const Timeline latin1 = read(event(1, 0, 1) + "* FROM CLIP NAME: caf\xE9\n");
    EXPECT_EQ(layout(latin1), "V: C caf\xC3\xA9 0+25");
    EXPECT_THAT(latin1.warnings, ElementsAre(HasSubstr("Latin-1")));
}

TEST(EdlLines, FoldedCommentsAreJoined) {
    const std::string first = std::string(78, 'x') + " Y";
    const EdlList list = lines(event(1, 0, 1) + "* " + first +
                               " \n* Z REST \n* FROM CLIP NAME: a\n" + "* short\n* other\n");
    EXPECT_THAT(list.events[0].comments,
                ElementsAre(first + "Z REST", "FROM CLIP NAME: a", "short", "other"));
}

TEST(EdlChannels, AreReadAsTheListMeansThem) {
    struct Row {
        const char* text;
        EdlDigits digits;
        std::vector<std::string> names;
    };
    const auto each = EdlDigits::oneTrackEach;
    const auto one = EdlDigits::oneNumber;
    const Row rows[] = {
        {"V", each, {"V"}},          {"V2", each, {"V2"}},
        {"A", each, {"A1"}},         {"A7", each, {"A7"}},
        {"AA", each, {"A1", "A2"}},  {"A34", each, {"A3", "A4"}},
        {"A12", each, {"A1", "A2"}}, {"A12", one, {"A12"}},
        {"B", each, {"V", "A1"}},    {"AA/V", each, {"V", "A1", "A2"}},
        {"A/V", one, {"V", "A1"}},   {"A1234V", each, {"V", "A1", "A2", "A3", "A4"}},
        {"NONE", each, {"NONE"}},    {"XYZ", each, {"XYZ"}},
    };
    for (const Row& row : rows) {
        EdlEvent event;
        event.channel = row.text;
        std::vector<std::string> names;
        for (const EdlChannel& channel : channelsOf(event, row.digits))
            names.push_back(channel.name);
        EXPECT_EQ(names, row.names) << row.text;
    }
    EXPECT_EQ(audioDigits(lines(event(1, 0, 1, "R", "C", "A12") + event(2, 1, 2, "R", "C", "A34"))),
              each);
    EXPECT_EQ(audioDigits(lines(event(1, 0, 1, "R", "C", "A12") + event(2, 1, 2, "R", "C", "A11"))),
              one);
    EXPECT_EQ(layout(read(event(1, 0, 1, "R", "C", "NONE") + "AUD  3    4\n")),
              "A3: C R 0+25 | A4: C R 0+25");
}

struct LayoutRow {
    const char* name;
    std::string text;
    const char* expected;
};

TEST(EdlReader, LaysEventsOut) {
    const std::string names = "* FROM CLIP NAME: a\n* TO CLIP NAME: b\n";
    const std::string half = "002 R2 V D 050 01:00:02:00 01:00:04:00 00:00:02:00 00:00:04:00\n";
    const LayoutRow rows[] = {
        {"cuts, a gap, out of order", event(2, 5, 6) + event(1, 0, 2), "V: C R1 0+50, C R1 125+25"},
        {"a pair with a line without length", event(1, 0, 2) + event(2, 2, 2) + half + names,
         "V: C a 0+50, T  50+50, C b 50+50"},
        {"a pair whose first line has its length", event(1, 0, 2) + half + names,
         "V: C a 0+50, T  50+50, C b 50+50"},
        {"the incoming clip goes on in the next event",
         event(1, 0, 2) + half + names + event(3, 4, 6, "R2"), "V: C a 0+50, T  50+50, C b 50+100"},
        {"another clip follows the transition",
         event(1, 0, 2) + half + names + event(3, 4, 6, "R9"),
         "V: C a 0+50, T  50+50, C b 50+50, C R9 100+50"},
        {"fade up from black", event(1, 0, 0, "BL") + event(1, 0, 2, "R", "D 012"),
         "V: T  0+12, C R 0+50"},
        {"fade out", event(1, 0, 2) + event(2, 2, 3, "BL", "W001 010"),
         "V: C R1 0+50, T  50+10, G BL 50+25"},
        {"a transition longer than its clip", event(1, 0, 2) + event(2, 2, 3, "R2", "D 040"),
         "V: C R1 0+50, T  50+25, C R2 50+25"},
        {"overlapping events", event(1, 0, 4, "A") + event(2, 1, 2, "B") + event(3, 4, 5, "C1"),
         "V: C A 0+100, C C1 100+25 | V (2): C B 25+25"},
        {"a background and a key over it",
         event(1, 0, 2, "A", "K B") + event(1, 0, 1, "B", "K 010") +
             "* FROM CLIP NAME: back\n* KEY CLIP NAME: front\n",
         "V: C back 0+50 | V (2): C front 0+25"},
        {"names from a reel comment", event(1, 0, 1, "KASS1") + "* REEL RC9 IS CLIP 28661.mov\n",
         "V: C 28661.mov 0+25"},
        {"a name without asterisk", event(1, 0, 1) + "FROM CLIP NAME: shot\n", "V: C shot 0+25"},
    };
    for (const LayoutRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(layout(read(row.text)), row.expected);
    }
}

TEST(EdlReader, AnOutgoingClipNamedNowhereElseIsSaidAndKept) {
    const Timeline timeline =
        read(event(1, 0, 2) + "* FROM CLIP NAME: a\n" + event(2, 2, 2, "R7") +
             event(2, 2, 4, "R2", "D 010") + "* FROM CLIP NAME: lost\n* TO CLIP NAME: b\n");
    EXPECT_THAT(timeline.warnings, ElementsAre(HasSubstr("outgoing clip")));
    EXPECT_THAT(timeline.tracks[0].items[1].metadata, HasSubstr("\"clip_name\":\"lost\""));
}

TEST(EdlReader, SpeedsBelongToTheReelTheyName) {
    const Timeline timeline =
        read(event(1, 0, 2, "R1") + event(1, 2, 3, "R2", "D 010") +
             "M2   R1   050.0   01:00:00:00\n" + "M2   R2   -25.0   01:00:00:00\nM2   R2   99.0\n" +
             event(2, 3, 4, "A LONG REEL") + "M2 A LONG REEL 000.0 01:00:00:00\n");
    const auto& items = timeline.tracks[0].items;
    EXPECT_EQ(items[0].speed, 2.0);
    EXPECT_EQ(items[2].speed, -1.0);
    EXPECT_EQ(items[3].speed, 0.0);
    EXPECT_THAT(items[2].metadata, HasSubstr(R"("frames_per_second":"-25.0")"));
    EXPECT_THAT(timeline.warnings, ElementsAre("second speeds for one event ignored: 1"));
}

struct RecordRow {
    const char* name;
    const char* line;
    std::int64_t frames;
    std::size_t warnings;
};

TEST(EdlReader, RecordTimesOverMidnightAndBroken) {
    const RecordRow rows[] = {
        {"midnight", "001 R V C 10:00:00:00 10:00:07:08 23:59:59:00 00:00:06:08", 176, 0},
        {"broken", "001 BL V C 00:00:00:00 00:00:02:00 10:00:00:00 00:00:00:00", 48, 1},
        {"broken without source", "001 BL V C 00:00:00:00 00:00:00:00 00:00:00:20 00:00:00:00", 28,
         1},
    };
    for (const RecordRow& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string next = row.warnings == 1 && row.frames == 28
                                     ? "\n002 R V C 01:00:00:00 01:00:00:01 00:00:02:00 00:00:02:01"
                                     : "";
        const Timeline timeline = read(row.line + next + "\n", k24);
        EXPECT_EQ(k24.flicksToFrameNearest(timeline.tracks[0].items[0].duration), row.frames);
        EXPECT_EQ(timeline.warnings.size(), row.warnings);
    }
    const Timeline after = read("001 R V C 10:00:00:00 10:00:02:00 23:59:59:00 00:00:01:00\n"
                                "002 R V C 10:00:00:00 10:00:01:00 00:00:01:00 00:00:02:00\n"
                                "* LOC: 00:00:01:12 RED late\n",
                                k24);
    EXPECT_EQ(layout(after), "V: C R 0+48, C R 48+24");
    EXPECT_EQ(k24.flicksToFrameNearest(after.markers[0].start), 60);
    EXPECT_EQ(*after.startFrame, (24 * 3600 - 1) * 24);
}

struct ClockRow {
    const char* name;
    std::string text;
    std::optional<Kv::FrameRate> given;
    Kv::FrameRate rate;
    bool drop;
};

TEST(EdlReader, RateAndModeOfTheRecord) {
    const auto line = [](const char* record) {
        return std::string("001 R V C 01:00:00:00 01:00:01:00 ") + record + "\n";
    };
    const std::string plain = line("01:00:00:00 01:00:01:00");
    const ClockRow rows[] = {
        {"given", plain, k2997, k2997, false},
        {"frame 24 proves 25", line("00:00:00:24 00:00:01:24"), {}, k25, false},
        {"frame 25 proves 30", line("00:00:00:25 00:00:01:25"), {}, k30, false},
        {"the first mode counts for the record", "FCM: DROP FRAME\n" + plain, {}, k2997, true},
        {"a later one for the source only",
         "FCM: NON-DROP FRAME\n" + plain + "FCM: DROP FRAME\n" + plain, k2997, k2997, false},
        {"a path glued to the mode", "FCM: NON-DROP FRAME/Volumes/x\n" + plain, k25, k25, false},
        {"marks before the frames", line("01:00:00;00 01:00:01;00"), {}, k2997, true},
        {"marks on the source alone", "001 R V C 01:00:00;00 01:00:01;00 01:00:00:00 01:00:01:00\n",
         k2997, k2997, false},
        {"30 with drop frame is 29.97", "FCM: DROP FRAME\n" + plain, k30, k2997, true},
        {"25 has no drop frame", "FCM: DROP FRAME\n" + plain, k25, k25, false},
        {"labels that drop frame lacks", "FCM: DROP FRAME\n" + line("01:01:00:00 01:01:01:00"),
         k2997, k2997, false},
    };
    for (const ClockRow& row : rows) {
        SCOPED_TRACE(row.name);
        const Timeline timeline = read(row.text, row.given);
        EXPECT_EQ(timeline.rate.rate, row.rate);
        EXPECT_EQ(timeline.dropFrame, row.drop);
        EXPECT_EQ(timeline.rateAssumed, !row.given);
    }
}

TEST(EdlReader, ASourceMayCountHigherThanTheRecord) {
    const Timeline timeline = read("001 R V C 00:00:01:15 00:00:02:28 01:00:00:00 01:00:01:12\n"
                                   "002 S V C 00:00:01:12 00:00:02:12 01:00:02:00 01:00:03:00\n",
                                   k24);
    EXPECT_EQ(timeline.tracks[0].items[0].sourceRate.rate, k30);
    EXPECT_DOUBLE_EQ(toSeconds(timeline.tracks[0].items[0].sourceStart), 1.5);
    EXPECT_DOUBLE_EQ(toSeconds(timeline.tracks[0].items[1].sourceStart), 1.5);
}

TEST(EdlReader, DropFrameRecordCountsFrames) {
    const Timeline timeline =
        read("FCM: DROP FRAME\n001 R V C 00:00:00;00 00:01:00;02 01:00:59;28 01:01:00;02\n", k2997);
    EXPECT_EQ(k2997.flicksToFrameNearest(timeline.duration), 2);
    EXPECT_EQ(timecodeText(*timeline.startFrame, {timeline.rate.rate, true}), "01:00:59;28");
}

TEST(EdlReader, MarkersOfEveryForm) {
    const Timeline timeline = read("* LOC: 00:00:00:05 BLUE early\n" + event(1, 1, 3) +
                                   "* LOC: 00:00:02:00 RED     two  words\n*LOC: 00:00:02:05\n"
                                   "* LOC: 00:00:09:00 late\n"
                                   "* Number  Color   Marker Name   Start TC   Track  Comment\n"
                                   "*     10  White   JO SMITH      00:00:02:10   V1   a row\n");
    std::vector<std::string> found;
    for (const Marker& marker : timeline.markers)
        found.push_back(format("%lld %s|%s|%s %d",
                               static_cast<long long>(k25.flicksToFrameNearest(marker.start)),
                               marker.name.c_str(), marker.comment.c_str(),
                               marker.colourText.c_str(), static_cast<int>(marker.placement)));
    EXPECT_THAT(found, ElementsAre("0 |early|BLUE 3", "25 |two  words|RED 0", "30 || 0",
                                   "200 |late| 3", "35 JO SMITH|a row|White 0"));
    EXPECT_THAT(timeline.warnings, ElementsAre(HasSubstr("outside")));
}

TEST(EdlReader, AListOfMarkersHasNoClips) {
    const auto at = [](int number, int seconds) {
        return format("%03d  001      V     C        01:00:%02d:00 01:00:%02d:01 01:00:%02d:00 "
                      "01:00:%02d:01  \n",
                      number, seconds, seconds, seconds, seconds);
    };
    const Timeline timeline = read("TITLE: marks\n\n" + at(1, 2) +
                                   "first line\nsecond |C:ResolveColorBlue |M:n1 |D:10\n" +
                                   at(2, 4) + " |C:ResolveColorRed |M: |D:1\n");
    EXPECT_THAT(timeline.tracks, IsEmpty());
    ASSERT_EQ(timeline.markers.size(), 2u);
    EXPECT_EQ(timeline.markers[0].name, "n1");
    EXPECT_EQ(timeline.markers[0].comment, "first line\nsecond");
    EXPECT_EQ(timeline.markers[0].colour, 0x0000FFu);
    EXPECT_EQ(k25.flicksToFrameNearest(timeline.markers[0].duration), 10);
    EXPECT_EQ(k25.flicksToFrameNearest(timeline.markers[1].start), 50);
    EXPECT_EQ(*timeline.startFrame, 3602 * 25);
    EXPECT_THAT(timeline.warnings, IsEmpty());
}

TEST(EdlReader, SourcesAreNamed) {
    const Timeline timeline =
        read(event(1, 0, 1, "AX") + "* FROM CLIP NAME: a.mov\n" + event(2, 1, 2, "TAPE1") +
             "* FROM CLIP NAME: b\n* SOURCE FILE: /media/b.mov\n* REEL: TAPE_1_IN_FULL\n" +
             event(3, 2, 3, "GEN") + "* FROM CLIP NAME: TEXT\n* FROM CLIP IS A GENERATOR\n");
    const auto& items = timeline.tracks[0].items;
    EXPECT_EQ(items[0].media.reel, "");
    EXPECT_EQ(items[0].media.name, "a.mov");
    EXPECT_EQ(items[1].media.kind, ReferenceKind::external);
    EXPECT_EQ(items[1].media.location, "/media/b.mov");
    EXPECT_EQ(items[1].media.reel, "TAPE_1_IN_FULL");
    EXPECT_EQ(items[2].media.kind, ReferenceKind::generator);
}

TEST(EdlReader, RefusesWhatIsNoList) {
    struct Row {
        const char* name;
        std::string text;
        const char* reason;
    };
    std::string crowd;
    for (int i = 0; i < 600; ++i)
        crowd += event(i, 0, 5);
    const Row rows[] = {
        {"empty", "", "no line"},
        {"another text", "hello\nworld\n", "no line"},
        {"a title alone", "TITLE: x\nFCM: DROP FRAME\n", "no line"},
        {"SubRip", "1\n00:00:01,000 --> 00:00:02,000\nHello\n",
         "list.edl: subtitles, not a timeline"},
        {"WebVTT", "WEBVTT\n\n00:01.000 --> 00:02.000\nHello\n", "list.edl: WebVTT"},
        {"XML", "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<xmeml/>\n", "list.edl: an XML document"},
        {"UTF-16", std::string("\xFF\xFET\0I\0", 6), "UTF-16"},
        {"a frame that the rate lacks",
         "\n001 R V C 00:00:00:00 00:00:01:00 00:00:00:00 00:00:01:25\n",
         "list.edl:2: frame number 25 cannot exist at 25"},
        {"six hundred events at once", crowd, "512 tracks"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const auto read = readEdl(row.text, "list.edl", k25);
        ASSERT_FALSE(read.ok());
        EXPECT_EQ(read.status().code(), StatusCode::damaged);
        EXPECT_THAT(read.status().text(), HasSubstr(row.reason));
    }
    EXPECT_EQ(readEdl(event(1, 0, 1), "list.edl", Kv::FrameRate()).status().code(),
              StatusCode::wrongUsage);
    EXPECT_EQ(readEdlFile("/nowhere/list.edl").status().code(), StatusCode::notFound);
}

} // namespace
