// The tests' main; the process that they kill is this program too.
#include "tests/crash/Writer.h"

#include <gmock/gmock.h>

int main(int argc, char** argv) {
    if (argc == 5 && std::string(argv[1]) == "--writer")
        return cutroom::test::runWriter(argv[2], argv[3],
                                        static_cast<unsigned>(std::stoul(argv[4])));
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
