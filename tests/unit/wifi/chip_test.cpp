#include "movo_net_fl_wifi/device.h"
#include "names.h"
#include "sim/sim.h"

#include <cstdlib>
#include <gtest/gtest.h>

// Which chip is fitted: the names of the board's environment, the probes, and their order.

namespace {
using Lines = std::vector<std::string>;

/** A chip, what the environment calls it, and whether its driver is looked for at the interface. */
struct Chip {
    MovoNetWifiDevType_e type;
    const char* driver;
    const char* id;
    const char* supplicant;
    bool byInterface = false;
};

// In the order of probing.
const std::vector<Chip> kChips{
    {_MOVO_NET_WIFI_REALTEK_8812AU_, "REALTEK_DRIVER_NAME_8812AU", "REALTEK_DEVICE_ID_8812AU",
     "REALTEK_SUPPLICANT_STR_8812AU", true},
    {_MOVO_NET_WIFI_REALTEK_8188EU_, "REALTEK_DRIVER_NAME_8188EU", "REALTEK_DEVICE_ID_8188EU",
     "REALTEK_SUPPLICANT_STR_8188EU", true},
    {_MOVO_NET_WIFI_ATHEROS_, "ATHEROS_DRIVER_NAME", "ATHEROS_DEVICE_ID", "ATHEROS_SUPPLICANT_STR"},
    {_MOVO_NET_WIFI_BRCM_43242_, "BRCM_DRIVER_NAME_43242", "BROADCOM_DEVICE_ID_43242", "BROADCOM_SUPPLICANT_STR_43242"},
    {_MOVO_NET_WIFI_BRCM_43569_, "BRCM_DRIVER_NAME_43569", "BROADCOM_DEVICE_ID_43569", "BROADCOM_SUPPLICANT_STR_43569"},
    {_MOVO_NET_WIFI_BRCM_LITEON_43569_, "BRCM_DRIVER_NAME_43569", "BROADCOM_LITEON__DEVICE_ID_43569",
     "BROADCOM_SUPPLICANT_STR_43569"},
};

/** A board whose environment names no chip at first. */
class Board : public testing::Test {
protected:
    Board() { clear(); }

    static void clear()
    {
        for (const Chip& chip : kChips) {
            for (const char* variable : {chip.driver, chip.id, chip.supplicant}) {
                EXPECT_EQ(unsetenv(variable), 0);
            }
        }
    }

    /** Every variable of the chip has its own name for a value. */
    static void describe(const Chip& chip)
    {
        for (const char* variable : {chip.driver, chip.id, chip.supplicant}) {
            EXPECT_EQ(setenv(variable, variable, 1), 0);
        }
    }

    static std::string probeOf(const Chip& chip)
    {
        const std::string usb = std::string("lsusb | grep ") + chip.id + " && ";
        const std::string driver = std::string(" | grep ") + chip.driver;
        return usb + (chip.byInterface ? "ls /sys/class/net/mlan0/device/driver/ -l" : "lsmod") + driver;
    }

    Lines probes() const
    {
        Lines texts;
        for (const sim::Command& command : set.commands()) {
            texts.push_back(command.text);
        }
        return texts;
    }

    sim::Set set;
};
} // namespace

TEST_F(Board, NamesEachChipByVariablesOfItsOwn)
{
    for (const Chip& chip : kChips) {
        describe(chip);
        EXPECT_STREQ(int_Wifi_GetDrvName(chip.type), chip.driver);
        EXPECT_STREQ(int_Wifi_GetDevID(chip.type), chip.id);
        EXPECT_STREQ(int_Wifi_GetWpaSupplicantStr(chip.type), chip.supplicant);
        clear();
    }
}

TEST_F(Board, IsProbedByACommandThatIsTold)
{
    for (const Chip& chip : kChips) {
        describe(chip);
        const std::string command = probeOf(chip);
        set.onCommand(command).prints("");
        set.forget();
        EXPECT_EQ(int_Wifi_IsDevAvailable(kIf, chip.type), 1) << command;
        EXPECT_EQ(probes(), Lines{command});
        EXPECT_EQ(set.log().size(), 1U);
        EXPECT_LOGGED(set, KEST_LEVEL_INFO, kWifiModule, "int_Wifi_IsDevAvailable", "Command: " + command + "\n");
        for (const int status : {256, 127 * 256, 9, -1}) {
            set.onCommand(command).fails(status);
            EXPECT_EQ(int_Wifi_IsDevAvailable(kIf, chip.type), 0) << command << " gives " << status;
        }
    }
}

TEST_F(Board, IsNotProbedWithoutIdDriverOrInterface)
{
    for (const Chip& chip : kChips) {
        describe(chip);
        EXPECT_EQ(int_Wifi_IsDevAvailable(nullptr, chip.type), 0);
        EXPECT_EQ(unsetenv(chip.id), 0);
        EXPECT_EQ(int_Wifi_IsDevAvailable(kIf, chip.type), 0);
        describe(chip);
        EXPECT_EQ(unsetenv(chip.driver), 0);
        EXPECT_EQ(int_Wifi_IsDevAvailable(kIf, chip.type), 0);
    }
    EXPECT_EQ(probes(), Lines{});
    EXPECT_TRUE(set.log().empty());
}

TEST_F(Board, HasTheFirstChipThatIsFound)
{
    Lines all;
    for (const Chip& chip : kChips) {
        describe(chip);
        all.push_back(probeOf(chip));
        set.onCommand(all.back()).prints("");
    }
    for (const Chip& chip : kChips) { // of those that are there, one fewer each time
        set.forget();
        EXPECT_EQ(int_Wifi_GetDevType(kIf), chip.type);
        const auto asked = static_cast<std::ptrdiff_t>(&chip - kChips.data()) + 1;
        EXPECT_EQ(probes(), Lines(all.begin(), all.begin() + asked));
        set.onCommand(probeOf(chip)).fails();
    }
    EXPECT_EQ(int_Wifi_GetDevType(kIf), _MOVO_NET_WIFI_UNKNOWN_);
}

TEST_F(Board, OfAnUnknownTypeHasNoVariablesAndRunsNothing)
{
    for (const Chip& each : kChips) {
        describe(each);
    }
    for (const int type : {0, 7, -1}) {
        const auto unknown = static_cast<MovoNetWifiDevType_e>(type);
        EXPECT_EQ(int_Wifi_GetDrvName(unknown), nullptr) << type;
        EXPECT_EQ(int_Wifi_GetDevID(unknown), nullptr) << type;
        EXPECT_EQ(int_Wifi_GetWpaSupplicantStr(unknown), nullptr) << type;
        EXPECT_EQ(int_Wifi_IsDevAvailable(kIf, unknown), 0) << type;
    }
    EXPECT_EQ(int_Wifi_GetDevType(nullptr), _MOVO_NET_WIFI_UNKNOWN_);
    EXPECT_EQ(probes(), Lines{});
}

TEST_F(Board, KeepsAnEmptyTextAsConfigured)
{
    EXPECT_EQ(setenv("ATHEROS_DEVICE_ID", "", 1), 0);
    EXPECT_EQ(setenv("ATHEROS_DRIVER_NAME", "", 1), 0);
    set.onCommand("lsusb").fails(512);
    EXPECT_EQ(int_Wifi_IsDevAvailable(kIf, _MOVO_NET_WIFI_ATHEROS_), 0);
    EXPECT_EQ(probes(), Lines{"lsusb | grep  && lsmod | grep "});
}

TEST_F(Board, IsRunUpTo255Characters)
{
    const std::string frame = "lsusb | grep  && lsmod | grep drv";
    EXPECT_EQ(setenv("ATHEROS_DRIVER_NAME", "drv", 1), 0);
    set.onCommand("lsusb").prints("");
    for (const std::size_t length : {255U, 256U}) {
        set.forget();
        const std::string id(length - frame.size(), 'x');
        EXPECT_EQ(setenv("ATHEROS_DEVICE_ID", id.c_str(), 1), 0);
        EXPECT_EQ(int_Wifi_IsDevAvailable(kIf, _MOVO_NET_WIFI_ATHEROS_), length == 255 ? 1 : 0);
        EXPECT_EQ(probes().size(), length == 255 ? 1U : 0U);
    }
}
