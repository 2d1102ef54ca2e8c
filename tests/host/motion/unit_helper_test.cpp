// Conversion between users' units and internal units.
#include "host/motion/unit_helper.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

namespace motion::host {
namespace {

using core::UnitEntry;

constexpr double PI = 3.14159265358979323846;

TEST(UnitHelperTest, convertsEveryEntryOfTheDefaultUnits) {
  const UnitHelper sut;
  const auto& units = UnitHelper::defaultSettings();
  EXPECT_DOUBLE_EQ(sut.toInternal(units, UnitEntry::LENGTH, 250.0), 0.25);
  EXPECT_DOUBLE_EQ(sut.toInternal(units, UnitEntry::ANGLE, 180.0), PI);
  EXPECT_DOUBLE_EQ(sut.toInternal(units, UnitEntry::VELOCITY, 500.0), 0.5);
  EXPECT_DOUBLE_EQ(sut.toInternal(units, UnitEntry::ACCELERATION, 9810.0), 9.81);
  EXPECT_DOUBLE_EQ(sut.toInternal(units, UnitEntry::JERK, 1.0), 0.001);
  EXPECT_DOUBLE_EQ(sut.toInternal(units, UnitEntry::ANGULAR_VELOCITY, 90.0), PI / 2);
  EXPECT_DOUBLE_EQ(sut.toInternal(units, UnitEntry::TIME, 1.5), 1.5);
}

TEST(UnitHelperTest, namesTheDefaultUnits) {
  const auto& entries = UnitHelper::defaultSettings().entries;
  EXPECT_STREQ(entries[0].name, "mm");
  EXPECT_STREQ(entries[1].name, "deg");
  EXPECT_STREQ(entries[2].name, "mm/s");
  EXPECT_STREQ(entries[3].name, "mm/s^2");
  EXPECT_STREQ(entries[4].name, "mm/s^3");
  EXPECT_STREQ(entries[5].name, "deg/s");
  EXPECT_STREQ(entries[6].name, "s");
}

TEST(UnitHelperTest, convertsBack) {
  const UnitHelper sut;
  const auto& units = UnitHelper::defaultSettings();
  EXPECT_DOUBLE_EQ(sut.toUser(units, UnitEntry::LENGTH, 0.25), 250.0);
  EXPECT_DOUBLE_EQ(sut.toUser(units, UnitEntry::ANGLE, PI), 180.0);
}

TEST(UnitHelperTest, takesTheFactorFromTheSettingsThatItIsGiven) {
  const UnitHelper sut;
  core::UnitSettings inches;
  inches.entries[0] = {"in", 0.0254};
  EXPECT_DOUBLE_EQ(sut.toInternal(inches, UnitEntry::LENGTH, 10.0), 0.254);
  EXPECT_DOUBLE_EQ(sut.toUser(inches, UnitEntry::LENGTH, 0.254), 10.0);
}

TEST(UnitHelperTest, hasSettingsForEveryChoice) {
  constexpr double factors[] = {1e-3, 1.0, 0.0254};
  for (std::size_t length = 0; length < LENGTH_UNITS.size(); ++length) {
    for (std::size_t time = 0; time < TIME_UNITS.size(); ++time) {
      const std::string name(LENGTH_UNITS[length]);
      const auto units = UnitHelper::settings(static_cast<LengthUnit>(length), static_cast<TimeUnit>(time)).entries;
      EXPECT_EQ(units[0].name, name);
      EXPECT_EQ(units[2].name, name + "/s") << "whatever the unit of time";
      EXPECT_EQ(units[3].name, name + "/s^2");
      EXPECT_EQ(units[4].name, name + "/s^3");
      for (const std::size_t entry : {0, 2, 3, 4}) {
        EXPECT_EQ(units[entry].factor, factors[length]);
      }
      EXPECT_EQ(units[6].name, TIME_UNITS[time]);
      EXPECT_EQ(units[6].factor, time == 0 ? 1.0 : 1e-3);
      EXPECT_STREQ(units[1].name, "deg");
      EXPECT_STREQ(units[5].name, "deg/s");
      EXPECT_DOUBLE_EQ(units[1].factor, PI / 180.0);
      EXPECT_DOUBLE_EQ(units[5].factor, PI / 180.0);
    }
  }
}

TEST(UnitHelperTest, hasNoNumberForAnEntryThatUnitsDoNotHave) {
  const UnitHelper sut;
  const auto beyond = static_cast<UnitEntry>(core::UNIT_ENTRY_COUNT);
  EXPECT_TRUE(std::isnan(sut.toInternal(UnitHelper::defaultSettings(), beyond, 1.0)));
  EXPECT_TRUE(std::isnan(sut.toUser(UnitHelper::defaultSettings(), beyond, 1.0)));
}

TEST(UnitHelperTest, isAHelperThatCanBeCloned) {
  const UnitHelper sut;
  EXPECT_STREQ(sut.getID(), "motion::core::UnitHelperT");
  EXPECT_EQ(sut.getType(), static_cast<std::uint32_t>(core::CreatableType::HELPER));
  const std::unique_ptr<core::IAmCreatable> clone(sut.createNew());
  EXPECT_NE(clone.get(), &sut);
  EXPECT_STREQ(clone->getID(), sut.getID());
}

}  // namespace
}  // namespace motion::host
