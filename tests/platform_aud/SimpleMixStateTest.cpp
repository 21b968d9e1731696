// The mix of an edit: defaults, refusals, stored text, configuration files.
#include "platform/aud/SimpleMixState.h"
#include "platform/files/KvIniFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

using Aud::SimpleMixState;

namespace {

constexpr bool kProgramme = false;
constexpr bool kMonitoring = true;

TEST(SimpleMixState, answersDefaultsForWhatItDoesNotHold) {
    const SimpleMixState mix(2);
    EXPECT_EQ(mix.getInputLevel(200) + mix.getInputPan(200) + mix.getMixLevel(7),
              1.0f + 0.5f + 1.0f);
    EXPECT_TRUE(mix.getInputRoutedToMix(3, -1) && !mix.getInputRoutedToMix(3, 0));
    EXPECT_TRUE(mix.getMixRoutedToOutput(-1, 100, kProgramme));
    EXPECT_FALSE(mix.getMixRoutedToOutput(0, 0, kMonitoring) || mix.anyInputSolo());
}

TEST(SimpleMixState, isAsFreshWhenEverythingIsSetBack) {
    SimpleMixState mix(2);
    for (const bool changed : {true, false}) {
        EXPECT_TRUE(mix.setMixLevel(5, changed ? 0.25f : 1.0f) && mix.setMixSoloState(5, changed));
        EXPECT_TRUE(mix.setInputRoutedToMix(1, 5, changed));
        EXPECT_TRUE(mix.setMixRoutedToOutput(-1, 3, !changed, kMonitoring));
        EXPECT_TRUE(mix.getMixRoutedToOutput(-1, 3, kProgramme)) << "kept apart";
        EXPECT_EQ(mix.anyMixSolo(), changed);
        EXPECT_EQ(mix == SimpleMixState(2), !changed);
    }
}

TEST(SimpleMixState, leavesWhatItRefusesAsItWas) {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    bool (*const rows[])(SimpleMixState&) = {
        [](SimpleMixState& m) { return m.setInputLevel(0, kNaN); },
        [](SimpleMixState& m) { return m.setInputLevel(9, kInfinity); },
        [](SimpleMixState& m) { return m.setInputPan(0, -0.1f); },
        [](SimpleMixState& m) { return m.setInputPan(0, 1.1f); },
        [](SimpleMixState& m) { return m.setInputPan(0, kNaN); },
        [](SimpleMixState& m) { return m.setInputRoutedToMix(0, -2, true); },
        [](SimpleMixState& m) { return m.setInputRoutedToMix(0, 125, true); },
        [](SimpleMixState& m) { return m.setMixLevel(-1, kNaN); },
        [](SimpleMixState& m) { return m.setMixMuteState(-2, true); },
        [](SimpleMixState& m) { return m.setMixSoloState(125, true); },
        [](SimpleMixState& m) { return m.setMixRoutedToOutput(-1, -1, false, kProgramme); },
    };
    for (const auto& set : rows) {
        SimpleMixState mix(2);
        EXPECT_FALSE(set(mix)) << &set - rows;
        EXPECT_TRUE(mix == SimpleMixState(2));
    }
}

TEST(SimpleMixState, takesNothingWhileNotValid) {
    SimpleMixState mix;
    EXPECT_FALSE(mix.setInputMuteState(0, true) || mix.setMixLevel(-1, 0.5f));
    EXPECT_TRUE(mix == SimpleMixState());
    mix.initialise(1);
    EXPECT_TRUE(mix.setInputMuteState(0, true));
    mix.initialise(3);
    EXPECT_TRUE(mix.getInputMuteState(0)) << "what is set stays";
    EXPECT_EQ(mix.numInputs(), 3u);
}

TEST(SimpleMixState, followsChannelsThatGo) {
    SimpleMixState mix(3);
    ASSERT_TRUE(mix.setInputPan(1, 0.0f) && mix.setInputPan(2, 1.0f));
    mix.removeInput(1);
    mix.removeInput(200);
    EXPECT_EQ(mix.getInputPan(1), 1.0f);
    EXPECT_EQ(mix.numInputs(), 2u);
}

SimpleMixState randomMix(std::mt19937& random) {
    const auto below = [&](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    SimpleMixState mix(static_cast<std::size_t>(below(6)));
    for (int i = 0; i < 12; ++i) {
        const auto input = static_cast<unsigned char>(below(8));
        const auto number = static_cast<signed char>(below(126) - 1);
        const auto output = static_cast<signed char>(below(128));
        mix.setInputLevel(input, static_cast<float>(below(1000)) / 7.0f);
        mix.setInputPan(input, static_cast<float>(below(101)) / 100.0f);
        mix.setInputSoloState(input, below(2) == 1);
        mix.setInputRoutedToMix(input, number, below(2) == 1);
        mix.setMixLevel(number, static_cast<float>(below(9)) / 3.0f);
        mix.setMixMuteState(number, below(2) == 1);
        mix.setMixRoutedToOutput(number, output, below(2) == 1, below(2) == 1);
    }
    return mix;
}

TEST(SimpleMixState, readsBackWhatItStores) {
    std::mt19937 random(20261121);
    for (int i = 0; i < 300; ++i) {
        const SimpleMixState mix = randomMix(random);
        const std::optional<SimpleMixState> text = SimpleMixState::fromString(mix.asString());
        ASSERT_TRUE(text && *text == mix) << mix.asString();

        KvIniFile file;
        mix.writeConfigurationInformation(file);
        SimpleMixState taken(mix.numInputs());
        ASSERT_TRUE(taken.retrieveCompatibleConfigurationInformation(file));
        ASSERT_TRUE(taken == mix) << file.text();
    }
}

TEST(SimpleMixState, storesAsLinesUnderItsTag) {
    SimpleMixState mix(2);
    mix.setInputLevel(1, 0.5f);
    mix.setInputMuteState(1, true);
    mix.setInputRoutedToMix(1, 2, true);
    mix.setMixRoutedToOutput(-1, 0, false, kProgramme);
    EXPECT_EQ(mix.asString(), "Aud__SimpleMixState_R1\n"
                              "inputs 2\n"
                              "input 1 level 0.5 pan 0.5 mute 1 solo 0 routing 2\n"
                              "mix -1 level 1 mute 0 solo 0 outputs 0 monitors none\n");
}

TEST(SimpleMixState, keepsLinesOfLaterVersions) {
    const std::string text = "Aud__SimpleMixState_R1\ninputs 1\nbus 3 reverb 0.2\n";
    EXPECT_EQ(SimpleMixState::fromString(text).value_or(SimpleMixState()).asString(), text);
}

TEST(SimpleMixState, refusesDamagedText) {
    for (const char* text :
         {"", "Aud__SimpleMixState_R2\ninputs 2\n", "Aud__SimpleMixState_R1\n",
          "Aud__SimpleMixState_R1\ninputs -1\n", "Aud__SimpleMixState_R1\ninputs 257\n",
          "Aud__SimpleMixState_R1\ninputs 2"})
        EXPECT_FALSE(SimpleMixState::fromString(text)) << text;
    const std::string input = "input 0 level 1 pan 0.5 mute 1 solo 0 routing ";
    for (const std::string& line :
         {input + "none", input + "1,1\n", input + "2,1\n", input + "125x\n", input + "-2\n",
          input + "\n", std::string("\n"),
          std::string("input 2 level 1 pan 0.5 mute 1 solo 0 routing none\n"),
          std::string("input 0 level inf pan 0.5 mute 1 solo 0 routing none\n"),
          std::string("input 0 level 1 pan 1.5 mute 1 solo 0 routing none\n"),
          std::string("input 0 level 1 pan 0.5 mute 2 solo 0 routing none\n"),
          std::string("input 0 level 1 pan 0.5 mute 1 solo x routing none\n"),
          std::string("input 0 pan 0.5 level 1 mute 1 solo 0 routing none\n"),
          std::string("mix 125 level 1 mute 0 solo 0 outputs none monitors none\n"),
          std::string("mix 0 level x mute 0 solo 0 outputs none monitors none\n"),
          std::string("mix 0 level 1 mute x solo 0 outputs none monitors none\n"),
          std::string("mix 0 level 1 mute 0 solo x outputs none monitors none\n"),
          std::string("mix 0 level 1 mute 0 solo 0 outputs -1 monitors none\n"),
          std::string("mix 0 level 1 mute 0 solo 0 outputs none monitors x\n")})
        EXPECT_FALSE(SimpleMixState::fromString("Aud__SimpleMixState_R1\ninputs 2\n" + line))
            << line;
}

TEST(SimpleMixState, takesFromAFileWhatItHasRoomFor) {
    KvIniFile file;
    ASSERT_TRUE(file.parse("[Mix]\nVersion=1\nInputs=4\n"
                           "[Input 0]\nLevel=0.25\nPan=7\nMute=perhaps\nSolo=1\n"
                           "[Input 3]\nLevel=0.5\n[Input 03]\nLevel=9\n"
                           "[Mix 2]\nMute=1\n[Mix 125]\nMute=1\n",
                           "mix.ini")
                    .ok());
    SimpleMixState mix(2);
    mix.setInputPan(0, 0.75f);
    ASSERT_TRUE(mix.retrieveCompatibleConfigurationInformation(file));
    SimpleMixState expected(2);
    expected.setInputPan(0, 0.75f);
    expected.setInputLevel(0, 0.25f);
    expected.setInputSoloState(0, true);
    expected.setMixMuteState(2, true);
    EXPECT_TRUE(mix == expected) << mix.asString();
}

TEST(SimpleMixState, leavesFilesItDoesNotUnderstand) {
    for (const char* const text :
         {"[Desk]\nModel=8\n", "[Mix]\nVersion=2\n[Input 0]\nLevel=0\n", "[Input 0]\nLevel=0\n"}) {
        KvIniFile file;
        ASSERT_TRUE(file.parse(text, "mix.ini").ok());
        SimpleMixState mix(1);
        EXPECT_FALSE(mix.retrieveCompatibleConfigurationInformation(file)) << text;
        EXPECT_TRUE(mix == SimpleMixState(1));
    }
}

TEST(SimpleMixState, replacesTheMixOfAFileAndLeavesTheRest) {
    KvIniFile file;
    ASSERT_TRUE(
        file.parse("[Desk]\nModel=8\n[Mix]\nVersion=1\nInputs=2\n[Input 1]\nLevel=0.5\n", "mix.ini")
            .ok());
    SimpleMixState(1).writeConfigurationInformation(file);
    EXPECT_THAT(file.sections(), testing::UnorderedElementsAre("Desk", "Mix", "Input 0", "Mix -1"));
    EXPECT_EQ(file.getText("Desk", "Model"), "8");
}

TEST(SimpleMixState, soundsTheSameWhereAnotherMixWas) {
    SimpleMixState mix(1), other(1);
    ASSERT_TRUE(mix.setInputRoutedToMix(0, 4, true));
    ASSERT_TRUE(other.setMixLevel(-1, 2) && other.setMixMuteState(4, true));
    KvIniFile file;
    mix.writeConfigurationInformation(file);
    ASSERT_TRUE(other.retrieveCompatibleConfigurationInformation(file));
    EXPECT_TRUE(other == mix) << other.asString();
}

} // namespace
