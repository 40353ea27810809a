#include "records/ServoSettings.h"

#include <gtest/gtest.h>

#include <string>

namespace tavril::records {
namespace {

const Settings all{{1, 1},   {2, 2},   {3, 0},     {4, 1},   {5, 80},  {6, 60},  {7, 84},  {8, 400},
                   {9, 440}, {10, 10}, {11, 8000}, {12, 12}, {13, 20}, {14, 30}, {15, -20}};

TEST(SettingsText, IsReadBackAsItWasWritten) {
  const CheckedSettings checked = checkSettings(settingsText(all));
  EXPECT_TRUE(checked.problems.empty());
  EXPECT_TRUE(checked.remarks.empty());
  EXPECT_EQ(checked.settings, all);
}

TEST(SettingsText, HasUnitsAndRanges) {
  const std::string text = settingsText(all);
  EXPECT_NE(text.find("\"max_tempertaure\": {\"value\": 80, \"unit\": \"°C\", \"range\": [0, 253]},"),
            std::string::npos);
  EXPECT_NE(text.find("\"calibration_angle\": {\"value\": -20, \"unit\": \"\", \"range\": [-20, 20]}\n"),
            std::string::npos);
}

TEST(SettingsText, StaysAsItIs) {
  EXPECT_EQ(settingsText({{9, 440}, {12, 12}}),
            "{\n"
            "  \"format\": \"tavril-servo-settings\",\n"
            "  \"version\": 1,\n"
            "  \"settings\": {\n"
            "    \"kp\": {\"value\": 440, \"unit\": \"\", \"range\": [0, 32766]},\n"
            "    \"over_temperature\": {\"value\": 12, \"unit\": \"10 ms\", \"range\": [0, 255]}\n"
            "  }\n"
            "}\n");
}

}  // namespace
}  // namespace tavril::records
