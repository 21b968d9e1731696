#include "platform/project/RecordBytes.h"

#include <gtest/gtest.h>

using namespace cutroom;

TEST(RecordBytes, AreReadWholeOrNotAtAll) {
    projdb::Record record;
    record.setField("name", "A001");
    record.setField("scene", "");
    record.mediaLocations = {"/a.mov", ""};
    record.markerTexts = {"Sky"};
    const std::string bytes = recordBytes(record);
    projdb::Record read;
    ASSERT_TRUE(readRecordBytes(bytes, read));
    EXPECT_EQ(read, record);
    std::vector<std::string> bad{bytes + '\0', "?" + bytes.substr(1),
                                 bytes[0] + std::string("\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 16)};
    for (std::size_t size = 0; size < bytes.size(); ++size)
        bad.push_back(bytes.substr(0, size));
    for (const std::string& one : bad)
        EXPECT_FALSE(readRecordBytes(one, read)) << one.size();
    EXPECT_EQ(read, record);
}
