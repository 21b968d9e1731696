#include "platform/prefs/Configuration.h"
#include "platform/base/Strings.h"
#include "platform/files/Files.h"
#include "platform/host/Clock.h"
#include "platform/host/Host.h"
#include "platform/prefs/TimedTask.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cutroom;
using testing::ElementsAre;

namespace {

const ConfigValue<int> checkQuantise("check_quantise", 1);
const ConfigValue<double> newLength("new_edit_len_mins", 5.0, 0.0, 1000.0);

struct SetClock final : iClock {
    double now() const override { return time; }
    double time = 100;
};

} // namespace

class ConfigurationTest : public testing::Test {
protected:
    void SetUp() override { beginLife(); }
    void TearDown() override { Host::uninstall(); }
    void beginLife() {
        Host::uninstall();
        HostServices services;
        services.clock = &clock;
        Host::install(services);
    }

    SetClock clock;
};

TEST_F(ConfigurationTest, HoldsWhatIsSetWithinItsRange) {
    const struct {
        const char* text;
        int whole;
        double real;
    } rows[] = {
        {"", -99, -99.5},  {"5", 5, 5},          {"-50", -10, -10},   {"99999999999", 10, 10},
        {"2.5", -99, 2.5}, {"five", -99, -99.5}, {"nan", -99, -99.5}, {"inf", -99, 10},
    };
    for (const auto& row : rows) {
        Configuration::instance().set("key", row.text);
        EXPECT_EQ(configInt("key", -99, -10, 10), row.whole) << row.text;
        EXPECT_EQ(configDouble("key", -99.5, -10, 10), row.real) << row.text;
    }
}

TEST_F(ConfigurationTest, ValueIsReadOncePerLife) {
    Configuration::instance().set("check_quantise", "0");
    EXPECT_EQ(checkQuantise.get(), 0);
    Configuration::instance().set("check_quantise", "7");
    EXPECT_EQ(checkQuantise.get(), 0);
    beginLife();
    EXPECT_EQ(checkQuantise.get(), 1);
    Configuration::instance().set("new_edit_len_mins", "2.5");
    EXPECT_EQ(newLength.get(), 2.5);
    EXPECT_THAT(Configuration::instance().keysAsked(),
                ElementsAre("check_quantise", "new_edit_len_mins"));
}

TEST_F(ConfigurationTest, LoadsTheConfigSectionOfAFile) {
    const test::TempFolder folder;
    const std::string path = folder / "cutroom.ini";
    Configuration& config = Configuration::instance();
    EXPECT_TRUE(config.load(path).ok());
    ASSERT_TRUE(writeFile(path, "[other]\na=1\n[config]\nb = 2\nc = 3\n").ok());
    ASSERT_TRUE(config.load(path).ok());
    EXPECT_EQ(config.get("a"), "");
    EXPECT_EQ(config.get("b"), "2");
    ASSERT_TRUE(writeFile(path, "[config]\nb = 4\nnonsense\n").ok());
    const Status status = config.load(path);
    EXPECT_EQ(status.text(), path + ":3: is neither a section nor a key with a value");
    EXPECT_EQ(config.get("b"), "2");
}

TEST_F(ConfigurationTest, TimedTasksSumTheirRunsByLabel) {
    const Kv::Ptr<TimedTask> task = TimedTaskManager::createTimedTask("Vob1");
    EXPECT_EQ(TimedTaskManager::createTimedTask("Vob1"), task);
    EXPECT_TRUE(task->enabled());
    {
        const TimedTask::Run outer(*task, "inform");
        clock.time += 1;
        for (const double seconds : {0.25, 0.5}) {
            const TimedTask::Run inner(*task, "client");
            clock.time += seconds;
        }
    }
    task->stop(); // one too many
    std::vector<std::string> records;
    for (const TimedTaskRecord& record : task->records())
        records.push_back(record.label + ' ' + std::to_string(record.runs) + ' ' +
                          toText(record.total) + ' ' + toText(record.longest));
    EXPECT_THAT(records, ElementsAre("client 2 0.75 0.5", "inform 1 1.75 1.75"));
}

TEST_F(ConfigurationTest, TimedTasksKeepABoundedNumberOfLabels) {
    const Kv::Ptr<TimedTask> task = TimedTaskManager::createTimedTask("Vob2");
    for (int i = 0; i < 2000; ++i)
        const TimedTask::Run run(*task, "client " + std::to_string(i));
    EXPECT_EQ(task->records().front().label, "(others)");
    EXPECT_EQ(task->records().front().runs, 1000u);
}

TEST_F(ConfigurationTest, TimedTasksCanBeSwitchedOffForALife) {
    Configuration::instance().set("timed_tasks", "0");
    const Kv::Ptr<TimedTask> off = TimedTaskManager::createTimedTask("Vob1");
    off->start("inform");
    off->stop();
    EXPECT_FALSE(off->enabled());
    EXPECT_THAT(off->records(), testing::IsEmpty());
    EXPECT_THAT(TimedTaskManager::tasks(), ElementsAre(off));
    beginLife();
    EXPECT_THAT(TimedTaskManager::tasks(), testing::IsEmpty());
    EXPECT_TRUE(TimedTaskManager::createTimedTask("Vob1")->enabled());
}
