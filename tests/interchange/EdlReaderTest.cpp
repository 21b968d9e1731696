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

// "V: C a 0+25 x2 | A1: G b 0+5; 10 name|comment|RED": tracks with their items in frames, markers.
std::string layout(const Timeline& timeline) {
    const auto frames = [&](Flicks time) {
        return toText(static_cast<long long>(timeline.rate.rate.flicksToFrameNearest(time)));
    };
    std::string text;
    for (const Track& track : timeline.tracks) {
        text += (text.empty() ? "" : " | ") + track.name;
        for (const Item& item : track.items) {
            text += &item == &track.items.front() ? ": " : ", ";
            text += std::string(1, "CGTN"[static_cast<int>(item.type)]) + ' ' + item.name + ' ' +
                    frames(item.start) + '+' + frames(item.duration);
            text += item.speed == 1 ? "" : " x" + toText(item.speed);
        }
    }
    for (const Marker& marker : timeline.markers)
        text += "; " + frames(marker.start) +
                (marker.duration > 0 ? "+" + frames(marker.duration) : "") + ' ' + marker.name +
                '|' + marker.comment + '|' + marker.colourText;
    return text;
}

TEST(EdlLines, AreTakenApartFromTheRight) {
    const std::string tail = " 01:00:00:00 01:00:01:00 00:00:00:00 00:00:01:00";
    const std::pair<const char*, const char*> rows[] = {
        {"001  TST      V     C       ", "001|TST|V|C|0"},
        {"000123 A_0031C010_241010_133208_h1C2T V D 010",
         "000123|A_0031C010_241010_133208_h1C2T|V|D|10"},
        {"1\tAX\tAA/V\tC", "1||AA/V|C|0"},
        {"002        BL V     W001    025", "002|BL|V|W001|25"},
        {"003  MY REEL 7 A2 C", "003|MY REEL 7|A2|C|0"},
        {"004 R V K B", "004|R|V|K B|0"},
        {"005 R V K O 012", "005|R|V|K O|12"},
        {"006 R V K 000", "006|R|V|K|0"},
        {"007 V C", "007||V|C|0"},
        {"008 R V KB", "008|R|V|KB|0"},
        {"009 R V KO 004", "009|R|V|KO|4"},
    };
    for (const auto& [line, parts] : rows) {
        const EdlList list = lines(line + tail + "  \r\n");
        ASSERT_EQ(list.events.size(), 1u) << line;
        const EdlEvent& event = list.events[0];
        EXPECT_EQ(join({event.number, event.reel, event.channel, event.kindText,
                        std::to_string(event.duration)},
                       "|"),
                  parts);
        EXPECT_EQ(event.timecodes, tail.substr(1));
    }
}

TEST(EdlLines, ThatAreNoEventsAreCountedAndSaid) {
    const std::string bad = "002 R V C 01:00:00:00 01:00:61:00 00:00:00:00 00:00:01:00\n";
    const EdlList list =
        lines("EP 107\n" + event(1, 0, 1) + bad + "WHAT IS THIS\n" +
              "003 R V C 01:00:00:00 01:00:01:00 00:00:00:00\n" // one place is missing
              "M2 R1 50% 01:00:00:00\nM4" +
              bad + "SPLIT: AUDIO DELAY= 00:00:00:10\n* LOC: RED here\n");
    EXPECT_EQ(list.events.size(), 1u);
    EXPECT_THAT(list.warnings,
                ElementsAre("lines that look like events but cannot be read: 3 (first: line 3)",
                            "lines of no known form left out: 2 (first: line 1)",
                            "speeds (M2) that cannot be read left out: 1 (first: line 6)",
                            HasSubstr("split edits (SPLIT) kept as comments"),
                            "locators (LOC) without a timecode kept as comments: 1"));
}

TEST(EdlLines, FoldedCommentsAreJoined) {
    for (const auto& [length, folded] :
         {std::pair{77, false}, {78, true}, {81, true}, {82, false}}) {
        const std::string first = std::string(static_cast<std::size_t>(length - 2), 'x') + " Y";
        const EdlList list = lines(event(1, 0, 1) + "* " + first +
                                   " \n* Z REST \n* FROM CLIP NAME: a\n* short\n* other\n");
        EXPECT_EQ(join(list.events[0].comments, "|"),
                  first + (folded ? "" : "|") + "Z REST|FROM CLIP NAME: a|short|other")
            << length;
    }
}

TEST(EdlChannels, AreReadAsTheListMeansThem) {
    const auto each = EdlDigits::oneTrackEach, one = EdlDigits::oneNumber;
    const std::tuple<const char*, EdlDigits, const char*> rows[] = {
        {"V", each, "V"},       {"V2", each, "V2"},        {"A", each, "A1"},
        {"A7", each, "A7"},     {"AA", each, "A1 A2"},     {"A34", each, "A3 A4"},
        {"A12", each, "A1 A2"}, {"A12", one, "A12"},       {"B", each, "V A1"},
        {"A/V", one, "V A1"},   {"AA/V", each, "V A1 A2"}, {"A1234V", each, "V A1 A2 A3 A4"},
        {"NONE", each, "NONE"}, {"XYZ", each, "XYZ"},
    };
    for (const auto& [text, digits, channels] : rows) {
        EdlEvent event;
        event.channel = text;
        std::vector<std::string> names;
        for (const EdlChannel& channel : channelsOf(event, digits))
            names.push_back(channel.name);
        EXPECT_EQ(join(names, " "), channels) << text;
    }
    const auto digitsOf = [](const char* first, const char* second) {
        return audioDigits(
            lines(event(1, 0, 1, "R", "C", first) + event(2, 1, 2, "R", "C", second)));
    };
    for (const auto& [second, meant] : {std::pair{"A34", each},
                                        {"A4", each},
                                        {"A13", each},
                                        {"A11", one},
                                        {"A5", one},
                                        {"A20", one}})
        EXPECT_EQ(digitsOf("A12", second), meant) << second;
}

struct LayoutRow {
    const char* name;
    std::string text;
    const char* expected;
    const char* warning = nullptr;
    Kv::FrameRate rate = k25;
};

const std::string kNames = "* FROM CLIP NAME: a\n* TO CLIP NAME: b\n";
const std::string kHalf = "002 R2 V D 050 01:00:02:00 01:00:04:00 00:00:02:00 00:00:04:00\n";
const std::string kNamed = "TITLE: X\n" + event(1, 0, 1) + "* FROM CLIP NAME: a\n";

std::string endingIn(const std::string& end) { return join(split(kNamed, '\n'), end); }

std::string pointAt(int number, int seconds) {
    return format("%03d  001      V     C        01:00:%02d:00 01:00:%02d:01 01:00:%02d:00 "
                  "01:00:%02d:01  \n",
                  number, seconds, seconds, seconds, seconds);
}

const LayoutRow kLayouts[] = {
    {"lines that end in CR LF", endingIn("\r\n"), "V: C a 0+25"},
    {"lines that end in CR", endingIn("\r"), "V: C a 0+25"},
    {"a byte order mark", "\xEF\xBB\xBF" + kNamed, "V: C a 0+25"},
    {"an end mark and filling", kNamed + "\x1A\x1A" + std::string(20, '\0'), "V: C a 0+25"},
    {"another encoding", event(1, 0, 1) + "* FROM CLIP NAME: caf\xE9\n", "V: C caf\xC3\xA9 0+25",
     "Latin-1"},
    {"channels named apart", event(1, 0, 1, "R", "C", "NONE") + "AUD  3    4\n",
     "A3: C R 0+25 | A4: C R 0+25"},
    {"cuts, a gap, out of order", event(2, 5, 6) + event(1, 0, 2), "V: C R1 0+50, C R1 125+25"},
    {"a pair with a line without length", event(1, 0, 2) + event(2, 2, 2) + kHalf + kNames,
     "V: C a 0+50, T  50+50, C b 50+50"},
    {"a pair whose first line has its length", event(1, 0, 2) + kHalf + kNames,
     "V: C a 0+50, T  50+50, C b 50+50"},
    {"the incoming clip goes on in the next event",
     event(1, 0, 2) + kHalf + kNames + event(3, 4, 6, "R2"), "V: C a 0+50, T  50+50, C b 50+100"},
    {"another clip follows the transition", event(1, 0, 2) + kHalf + kNames + event(3, 4, 6, "R9"),
     "V: C a 0+50, T  50+50, C b 50+50, C R9 100+50"},
    {"fade up from black", event(1, 0, 0, "BL") + event(1, 0, 2, "R", "D 012"),
     "V: T  0+12, C R 0+50"},
    {"fade out", event(1, 0, 2) + event(2, 2, 3, "BL", "W001 010"),
     "V: C R1 0+50, T  50+10, G BL 50+25"},
    {"a transition longer than its clip", event(1, 0, 2) + event(2, 2, 3, "R2", "D 040"),
     "V: C R1 0+50, T  50+25, C R2 50+25", "shortened: 1"},
    {"overlapping events", event(1, 0, 4, "A") + event(2, 1, 2, "B") + event(3, 4, 5, "C1"),
     "V: C A 0+100, C C1 100+25 | V (2): C B 25+25"},
    {"a background and a key over it",
     event(1, 0, 2, "A", "K B") + event(1, 0, 1, "B", "K 010") +
         "* FROM CLIP NAME: back\n* KEY CLIP NAME: front\n",
     "V: C back 0+50 | V (2): C front 0+25"},
    {"names from a reel comment", event(1, 0, 1, "KASS1") + "* REEL RC9 IS CLIP 28661.mov\n",
     "V: C 28661.mov 0+25"},
    {"a name without asterisk", event(1, 0, 1) + "FROM CLIP NAME: shot\n", "V: C shot 0+25"},
    {"speeds of the reels they name",
     event(1, 0, 2, "R1") + event(1, 2, 3, "R2", "D 010") + "M2   R1   050.0   01:00:00:00\n" +
         "M2   R2   -25.0   01:00:00:00\nM2   R2   99.0\n" + event(2, 3, 4, "A LONG REEL") +
         "M2 A LONG REEL 000.0 01:00:00:00\n",
     "V: C R1 0+50 x2, T  50+10, C R2 50+25 x-1, C A LONG REEL 75+25 x0",
     "second speeds for one event ignored: 1"},
    {"speeds above their events",
     "M2 R1 050.0\n" + event(1, 0, 1) + "M2 R2 +000.0\n" + event(2, 1, 2, "R2") +
         event(3, 2, 3, "LONG_REEL_3") + "M2 LONG_REE 012.5\n" + event(4, 3, 4, "R4"),
     "V: C R1 0+25 x2, C R2 25+25 x0, C LONG_REEL_3 50+25 x0.5, C R4 75+25"},
    {"speeds above both lines of their event",
     event(1, 0, 1, "P") + "M2 A 050\nM2 B 012.5\n" + event(2, 1, 2, "A") +
         event(2, 2, 3, "B", "D 010"),
     "V: C P 0+25, C A 25+25 x2, T  50+10, C B 50+25 x0.5"},
    {"a speed ahead of one for the event above",
     event(1, 0, 1, "A") + "M2 B 050\nM2 A 012.5\nM2 B 099\n" + event(2, 1, 2, "B"),
     "V: C A 0+25 x0.5, C B 25+25 x2", "second speeds for one event ignored: 1"},
    {"a speed whose reel is no part of the next event",
     event(1, 0, 1, "P") + "M2 B 050\n" + event(2, 1, 2, "A") + event(3, 2, 3, "B", "D 010"),
     "V: C P 0+25 x2, C A 25+25, T  50+10, C B 50+25"},
    {"a day that ends at 24", "001 R V C 23:59:59:00 24:00:00:00 23:59:59:00 24:00:00:00\n",
     "V: C R 0+25"},
    {"on over midnight",
     "001 R V C 10:00:00:00 10:00:02:00 23:59:59:00 00:00:01:00\n"
     "002 R V C 10:00:00:00 10:00:01:00 00:00:01:00 00:00:02:00\n* LOC: 00:00:01:12 RED late\n",
     "V: C R 0+50, C R 50+25; 62 |late|RED"},
    {"an end before the start", "001 BL V C 00:00:00:00 00:00:02:00 10:00:00:00 00:00:00:00\n",
     "V: G BL 0+50", "record out before record in"},
    {"an end before the start, and no source",
     "001 BL V C 00:00:00:00 00:00:00:00 00:00:00:20 00:00:00:00\n"
     "002 R V C 01:00:00:00 01:00:00:01 00:00:02:00 00:00:02:01\n",
     "V: G BL 0+30, C R 30+1", "record out before record in"},
    {"drop frame leaves labels out",
     "FCM: DROP FRAME\n001 R V C 00:00:00;00 00:01:00;02 01:00:59;28 01:01:00;02\n", "V: C R 0+2",
     nullptr, k2997},
    {"markers of every form",
     "* LOC: 00:00:00:05 BLUE early\n" + event(1, 1, 3) +
         "* LOC: 00:00:02:00 RED     two  words\n*LOC: 00:00:02:05\n* LOC: 00:00:09:00 late\n"
         "* Number  Color   Marker Name   Start TC   Track  Comment\n"
         "*     10  White   JO SMITH      00:00:02:10   V1   a row\n",
     "V: C R1 0+50; 0 |early|BLUE; 25 |two  words|RED; 30 ||; 200 |late|; 35 JO SMITH|a row|White",
     "outside"},
    {"a list of markers has no clips",
     "TITLE: marks\n\n" + pointAt(1, 2) + "first line\nsecond |C:ResolveColorBlue |M:n1 |D:10\n" +
         pointAt(2, 4) + " |C:ResolveColorRed |M: |D:1\n",
     "; 0+10 n1|first line\nsecond|Blue; 50+1 ||Red"},
    {"notes that begin as other lines do",
     pointAt(1, 2) + "REEL 2 is late |C:ResolveColorRed |M:a |D:1\n" + pointAt(2, 4) +
         "* as said\nM2 fast |C:ResolveColorRed |M:b |D:1\n",
     "; 0+1 a|REEL 2 is late|Red; 50+1 b|* as said\nM2 fast|Red"},
    {"bars in a comment",
     event(1, 0, 1) + "* LOC: 00:00:00:05 RED mark\n* FROM CLIP NAME: a\n* |C: a |M: b |D: odd\n",
     "V: C a 0+25; 5 |mark|RED"},
    {"a note with a line that was meant as an event",
     pointAt(1, 2) + "002 R V C 01:00:00:00 01:00:61:00 00:00:00:00 00:00:01:00\n"
                     "* b |C:ResolveColorRed |M:a |D:1\n",
     "; 0+1 a|002 R V C 01:00:00:00 01:00:61:00 00:00:00:00 00:00:01:00\n* b|Red",
     "cannot be read: 1 (first: line"},
};

TEST(EdlReader, LaysEventsAndMarkersOut) {
    for (const LayoutRow& row : kLayouts) {
        SCOPED_TRACE(row.name);
        const Timeline timeline = read(row.text, row.rate);
        EXPECT_EQ(layout(timeline), row.expected);
        if (row.warning)
            EXPECT_THAT(timeline.warnings, ElementsAre(HasSubstr(row.warning)));
        else
            EXPECT_THAT(timeline.warnings, IsEmpty());
    }
    EXPECT_EQ(read(kNamed).name, "X");
}

TEST(EdlReader, StartsAtTheEarliestLabel) {
    struct Row {
        std::string text;
        Kv::FrameRate rate;
        const char* start;
    };
    for (const Row& row :
         {Row{"001 R V C 10:00:00:00 10:00:07:08 23:59:59:00 00:00:06:08\n", k25, "23:59:59:00"},
          {event(2, 5, 6) + event(1, 3, 5), k25, "00:00:03:00"},
          {"FCM: DROP FRAME\n001 R V C 00:00:00;00 00:00:01;00 01:00:59;28 01:01:01;00\n", k2997,
           "01:00:59;28"},
          {pointAt(1, 4) + " |C:ResolveColorRed |M: |D:1\n" + pointAt(2, 2) +
               " |C:ResolveColorRed |M: |D:1\n",
           k25, "01:00:02:00"}}) {
        const Timeline timeline = read(row.text, row.rate);
        EXPECT_EQ(timecodeText(*timeline.startFrame, {timeline.rate.rate, timeline.dropFrame}),
                  row.start);
    }
}

TEST(EdlReader, AnOutgoingClipNamedNowhereElseIsSaidAndKept) {
    const Timeline timeline =
        read(event(1, 0, 2) + "* FROM CLIP NAME: a\n" + event(2, 2, 2, "R7") +
             event(2, 2, 4, "R2", "D 010") + "* FROM CLIP NAME: lost\n* TO CLIP NAME: b\n");
    EXPECT_THAT(timeline.warnings, ElementsAre(HasSubstr("outgoing clip")));
    EXPECT_THAT(timeline.tracks[0].items[1].metadata, HasSubstr("\"clip_name\":\"lost\""));
}

TEST(EdlReader, RateAndModeOfTheRecord) {
    const auto line = [](const char* record) {
        return std::string("001 R V C 01:00:00:00 01:00:01:00 ") + record + "\n";
    };
    const std::string plain = line("01:00:00:00 01:00:01:00");
    struct Row {
        const char* name;
        std::string text;
        std::optional<Kv::FrameRate> given;
        const char* found;
    };
    for (const Row& row : {
             Row{"given", plain, k2997, "30000/1001"},
             {"frame 24 proves 25", line("00:00:00:24 00:00:01:24"), {}, "25"},
             {"frame 25 proves 30", line("00:00:00:25 00:00:01:25"), {}, "30"},
             {"the first mode counts for the record",
              "FCM: DROP FRAME\n" + plain,
              {},
              "30000/1001 drop"},
             {"a later one for the source only",
              "FCM: NON-DROP FRAME\n" + plain + "FCM: DROP FRAME\n" + plain, k2997, "30000/1001"},
             {"a path glued to the mode", "FCM: NON-DROP FRAME/Volumes/x\n" + plain, k25, "25"},
             {"in small letters", "fcm: Drop Frame\n" + plain, {}, "30000/1001 drop"},
             {"marks before the frames", line("01:00:00;00 01:00:01;00"), {}, "30000/1001 drop"},
             {"a point before the frames", line("01:00:00.00 01:00:01.00"), k2997,
              "30000/1001 drop"},
             {"points all over", line("01.00.00.00 01.00.01.00"), k2997, "30000/1001"},
             {"marks on the source alone",
              "001 R V C 01:00:00;00 01:00:01;00 01:00:00:00 01:00:01:00\n", k2997, "30000/1001"},
             {"a source over midnight",
              "001 R V C 23:59:59:12 00:00:01:02 01:00:00:00 01:00:01:15\n",
              {},
              "25"},
             {"30 with drop frame is 29.97", "FCM: DROP FRAME\n" + plain, k30, "30000/1001 drop"},
             {"25 has no drop frame", "FCM: DROP FRAME\n" + plain, k25, "25"},
             {"labels that drop frame lacks", "FCM: DROP FRAME\n" + line("01:01:00:00 01:01:01:00"),
              k2997, "30000/1001"},
         }) {
        SCOPED_TRACE(row.name);
        const Timeline timeline = read(row.text, row.given);
        EXPECT_EQ(timeline.rate.rate.asString() + (timeline.dropFrame ? " drop" : ""), row.found);
        EXPECT_EQ(timeline.rateAssumed, !row.given);
    }
}

TEST(EdlReader, ASourceMayCountHigherThanTheRecordAndBackwards) {
    const Timeline reversed = read("001 R V C 00:00:03:00 00:00:01:00 01:00:00:00 01:00:02:00\n"
                                   "M2 R -25.0 00:00:03:00\n"
                                   "002 R V C 23:59:59:00 00:00:01:00 01:00:02:00 01:00:04:00\n"
                                   "M2 R -25.0 23:59:59:00\n");
    EXPECT_EQ(toSeconds(reversed.tracks[0].items[0].sourceStart), 1);
    EXPECT_EQ(toSeconds(reversed.tracks[0].items[1].sourceStart), 86399);
    const Timeline timeline = read("001 R V C 00:00:01:15 00:00:02:25 01:00:00:00 01:00:01:12\n"
                                   "002 S V C 00:00:01:12 00:00:02:12 01:00:02:00 01:00:03:00\n",
                                   k24);
    EXPECT_EQ(timeline.tracks[0].items[0].sourceRate.rate, k30);
    EXPECT_DOUBLE_EQ(toSeconds(timeline.tracks[0].items[0].sourceStart), 1.5);
    EXPECT_DOUBLE_EQ(toSeconds(timeline.tracks[0].items[1].sourceStart), 1.5);
}

TEST(EdlReader, SourcesAreNamed) {
    const Timeline timeline =
        read(event(1, 0, 1, "AX") + "* FROM CLIP NAME: a.mov\n" + event(2, 1, 2, "TAPE1") +
             "* FROM CLIP NAME: b\n* SOURCE FILE: /media/b.mov\n* REEL: TAPE_1_IN_FULL\n" +
             event(3, 2, 3, "GEN") + "* FROM CLIP NAME: TEXT\n* FROM CLIP IS A GENERATOR\n");
    std::vector<std::string> sources;
    for (const Item& item : timeline.tracks[0].items)
        sources.push_back(join({item.media.reel, item.media.name, item.media.location}, "|"));
    EXPECT_THAT(sources, ElementsAre("|a.mov|", "TAPE_1_IN_FULL|TAPE_1_IN_FULL|/media/b.mov",
                                     "GEN|GEN|TEXT"));
    EXPECT_EQ(timeline.tracks[0].items[2].media.kind, ReferenceKind::generator);
}

TEST(EdlReader, RefusesWhatIsNoList) {
    std::string crowd;
    for (int i = 0; i < 600; ++i)
        crowd += event(i, 0, 5);
    const std::pair<std::string, const char*> rows[] = {
        {"", "no line"},
        {"hello\nworld\n", "no line"},
        {"TITLE: x\nFCM: DROP FRAME\n", "no line"},
        {"\n001 R V C 00:00:00:00 00:00:60:00 00:00:00:00 00:01:00:00\n",
         "list.edl:2: the line looks like an event"},
        {"1\n00:00:01,000 --> 00:00:02,000\nHello\n", "list.edl: subtitles, not a timeline"},
        {"WEBVTT\n\n00:01.000 --> 00:02.000\nHello\n", "list.edl: WebVTT"},
        {"\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<xmeml/>\n", "list.edl: an XML document"},
        {std::string("\xFF\xFET\0I\0", 6), "UTF-16"},
        {std::string("T\0I\0", 4), "UTF-16"},
        {std::string("\0\0\0\x18"
                     "ftyp",
                     8),
         "no line"},
        {"\n001 R V C 00:00:00:00 00:00:01:00 00:00:00:00 00:00:01:25\n",
         "list.edl:2: frame number 25 cannot exist at 25"},
        {crowd, "512 tracks"},
    };
    for (const auto& [text, reason] : rows) {
        const Status refused = readEdl(text, "list.edl", k25).status();
        EXPECT_EQ(refused.code(), StatusCode::damaged) << reason;
        EXPECT_THAT(refused.text(), HasSubstr(reason));
    }
    EXPECT_EQ(readEdl(event(1, 0, 1), "list.edl", Kv::FrameRate()).status().code(),
              StatusCode::wrongUsage);
    EXPECT_EQ(readEdlFile("/nowhere/list.edl").status().code(), StatusCode::notFound);
}

} // namespace
