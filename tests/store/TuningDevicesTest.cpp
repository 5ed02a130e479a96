// Tuning devices per output port: what each port offers, which device is selected, the blobs and
// mix matrices per device, and the start-up check of the default selections.

#include <android-base/properties.h>
#include <android/log.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "LogLines.h"
#include "ScopedHostRoot.h"
#include "SpatializerParamArrayTestPeer.h"
#include "StoreTest.h"
#include "model/Parameter.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"

namespace korva {
namespace {

using test::LogCapture;

class TuningDevicesTest : public test::StoreTest {
protected:
    void SetUp() override {
        mPeer.addTuningDevice("default_headphone", "headphone", {1, 0}, {1, 1, 7, 8});
        mPeer.addTuningDevice("hp_warm", "headphone");
        mPeer.addTuningDevice("default_bluetooth", "bluetooth");
        mPeer.addTuningDevice("default_usb", "usb");
        mPeer.addTuningDevice("speaker_main", "internal_speaker");
        mPeer.addTuningDevice("bc", "hdmi");
        mPeer.addTuningDevice("a", "hdmi");
        // Port names compare exactly, so these serve no port of the table.
        mPeer.addTuningDevice("loud", "Headphone");
        mPeer.addTuningDevice("louder", "headphones");
    }
};

TEST_F(TuningDevicesTest, AvailableDevicesAreSortedAndSpaceSeparatedPerPort) {
    struct Case {
        int port;
        std::string devices;
        unsigned int length;
    };
    const Case cases[] = {
        {DEVICE_INTERNAL_SPEAKER, "speaker_main", 13},
        {DEVICE_HDMI, "a bc", 5},
        {DEVICE_MIRACAST, "", 0},
        {DEVICE_HEADPHONE, "default_headphone hp_warm", 26},
        {DEVICE_BLUETOOTH, "default_bluetooth", 18},
        {DEVICE_USB, "default_usb", 12},
        {DEVICE_OTHER, "", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(kAndroidDeviceNames[c.port]);
        EXPECT_EQ(c.devices, mStore.getAvailableTuningDevices(c.port));
        EXPECT_EQ(c.length, mStore.getAvailableTuningDevicesLen(c.port));
        // The length is the buffer that holds the names and their terminating zero.
        EXPECT_EQ(c.devices.empty() ? 0 : c.devices.size() + 1,
                  mStore.getAvailableTuningDevicesLen(c.port));
    }
    EXPECT_TRUE(errors().empty());
}

TEST_F(TuningDevicesTest, NoTuningDevicesGiveNoLength) {
    mPeer.tuningDevicePorts().clear();
    for (int port = 0; port < kNumAndroidDevices; port++) {
        EXPECT_EQ(0u, mStore.getAvailableTuningDevicesLen(port));
        EXPECT_EQ("", mStore.getAvailableTuningDevices(port));
    }
}

// A port outside the name table is the caller's mistake: it matches nothing, is reported and
// never reads past the table.
TEST_F(TuningDevicesTest, PortsOutsideTheTableMatchNothing) {
    for (int port : {-1, 7, 1000, -2147483647 - 1}) {
        SCOPED_TRACE(port);
        mLog.clear();
        EXPECT_EQ("", mStore.getAvailableTuningDevices(port));
        EXPECT_EQ(0u, mStore.getAvailableTuningDevicesLen(port));
        EXPECT_FALSE(mStore.isValidTuningDevice(port, "default_headphone"));
        EXPECT_EQ(-22, mStore.setSelectedTuningDevice(port, "default_headphone"));
        const std::string unknown = "port " + std::to_string(port) + " is not a known port";
        EXPECT_EQ((std::vector<std::string>{
                      "getAvailableTuningDevices(): " + unknown,
                      "getAvailableTuningDevicesLen(): " + unknown,
                      "isValidTuningDevice(): " + unknown,
                      "setSelectedTuningDevice(): " + unknown,
                      "setSelectedTuningDevice tuningDevice default_headphone is not "
                      "available for port ?.",
                  }),
                  errors());
    }
}

TEST_F(TuningDevicesTest, ValidityNeedsTheDeviceAndItsExactPort) {
    struct Case {
        int port;
        const char* device;
        bool valid;
    };
    const Case cases[] = {
        {DEVICE_HEADPHONE, "default_headphone", true},
        {DEVICE_HEADPHONE, "hp_warm", true},
        {DEVICE_BLUETOOTH, "default_headphone", false},
        {DEVICE_HEADPHONE, "loud", false},
        {DEVICE_HEADPHONE, "louder", false},
        {DEVICE_HEADPHONE, "Default_headphone", false},
        {DEVICE_HEADPHONE, "", false},
        {DEVICE_HDMI, "a", true},
        {DEVICE_MIRACAST, "a", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(kAndroidDeviceNames[c.port]) + "/" + c.device);
        EXPECT_EQ(c.valid, mStore.isValidTuningDevice(c.port, c.device));
    }
}

TEST_F(TuningDevicesTest, SelectionTakesOnlyADeviceOfThatPort) {
    EXPECT_EQ("default_headphone", mStore.getSelectedTuningDevice(DEVICE_HEADPHONE));
    mLog.clear();

    EXPECT_EQ(0, mStore.setSelectedTuningDevice(DEVICE_HEADPHONE, "hp_warm"));
    EXPECT_EQ("hp_warm", mStore.getSelectedTuningDevice(DEVICE_HEADPHONE));

    struct Refused {
        int port;
        const char* device;
        const char* error;
    };
    const Refused refused[] = {
        {DEVICE_HEADPHONE, "speaker_main",
         "setSelectedTuningDevice tuningDevice speaker_main is not available for port "
         "headphone."},
        {DEVICE_HEADPHONE, "missing",
         "setSelectedTuningDevice tuningDevice missing is not available for port "
         "headphone."},
        {DEVICE_HEADPHONE, "loud",
         "setSelectedTuningDevice tuningDevice loud is not available for port headphone."},
        {DEVICE_USB, "default_bluetooth",
         "setSelectedTuningDevice tuningDevice default_bluetooth is not available for port "
         "usb."},
    };
    for (const Refused& r : refused) {
        SCOPED_TRACE(r.device);
        mLog.clear();
        EXPECT_EQ(-22, mStore.setSelectedTuningDevice(r.port, r.device));
        EXPECT_EQ(std::vector<std::string>{r.error}, errors());
    }
    EXPECT_EQ("hp_warm", mStore.getSelectedTuningDevice(DEVICE_HEADPHONE));
    EXPECT_EQ("default_usb", mStore.getSelectedTuningDevice(DEVICE_USB));

    // A port without a selection gets one.
    EXPECT_EQ(0, mStore.setSelectedTuningDevice(DEVICE_HDMI, "bc"));
    EXPECT_EQ("bc", mStore.getSelectedTuningDevice(DEVICE_HDMI));
}

TEST_F(TuningDevicesTest, SelectionLogsPortNameAndDevice) {
    android::base::SetProperty("persist.vendor.korva.loglevel", "2");
    mStore.setSelectedTuningDevice(DEVICE_BLUETOOTH, "default_bluetooth");
    EXPECT_EQ(
        std::vector<std::string>{
            "setSelectedTuningDevice(port=bluetooth, device=default_bluetooth)"},
        storeLines(ANDROID_LOG_DEBUG));
}

TEST_F(TuningDevicesTest, UnselectedPortReadsEmptyAndGainsAnEmptyEntry) {
    EXPECT_EQ(0u, mPeer.selectedTuningDevices().count(DEVICE_INTERNAL_SPEAKER));
    EXPECT_EQ("", mStore.getSelectedTuningDevice(DEVICE_INTERNAL_SPEAKER));
    ASSERT_EQ(1u, mPeer.selectedTuningDevices().count(DEVICE_INTERNAL_SPEAKER));
    EXPECT_EQ("", mPeer.selectedTuningDevices()[DEVICE_INTERNAL_SPEAKER]);
}

TEST_F(TuningDevicesTest, TuningBlobLookupInsertsForUnknownNames) {
    EXPECT_TRUE(mStore.isXMLTuningValid("default_headphone"));
    std::vector<int>& blob = mStore.getXMLTuningParams("default_headphone");
    EXPECT_EQ((std::vector<int>{1, 0}), blob);

    EXPECT_FALSE(mStore.isXMLTuningValid("nowhere"));
    EXPECT_TRUE(mStore.getXMLTuningParams("nowhere").empty());
    EXPECT_TRUE(mStore.isXMLTuningValid("nowhere"));
    EXPECT_EQ(&blob, &mStore.getXMLTuningParams("default_headphone"));
    EXPECT_EQ((std::vector<std::string>{"getXMLTuningParams(device = default_headphone)",
                                        "getXMLTuningParams(device = nowhere)",
                                        "getXMLTuningParams(device = default_headphone)"}),
              storeLines(ANDROID_LOG_DEBUG));
}

TEST_F(TuningDevicesTest, MixMatrixOfAnUnknownDeviceIsOneSharedEmptyVector) {
    const std::vector<int>& known = mStore.getXMLTuningMixMatrix("default_headphone");
    EXPECT_EQ((std::vector<int>{1, 1, 7, 8}), known);
    EXPECT_EQ(&mPeer.tuningMixMatrices()["default_headphone"], &known);

    const std::vector<int>& first = mStore.getXMLTuningMixMatrix("hp_warm");
    const std::vector<int>& second = mStore.getXMLTuningMixMatrix("nowhere");
    EXPECT_TRUE(first.empty());
    EXPECT_EQ(&first, &second);
    EXPECT_EQ(0u, mPeer.tuningMixMatrices().count("nowhere"));
    EXPECT_EQ((std::vector<std::string>{
                  "getXMLTuningMixMatrix(): no mix matrix found with tuning device hp_warm",
                  "getXMLTuningMixMatrix(): no mix matrix found with tuning device nowhere"}),
              storeLines(ANDROID_LOG_WARN));
    EXPECT_TRUE(errors().empty());
}

TEST_F(TuningDevicesTest, DefaultsAllPresentKeepTheTunings) {
    const int count = mPeer.xmlTuningCount();
    ASSERT_GT(count, 0);
    mPeer.checkDefaultTuningDevices();
    EXPECT_EQ(count, mPeer.xmlTuningCount());
    EXPECT_TRUE(errors().empty());
}

TEST_F(TuningDevicesTest, FirstMissingDefaultDisablesEveryTuning) {
    struct Case {
        const char* name;
        // Device name -> the port it is filed for; replaces the fixture's devices.
        std::vector<std::pair<std::string, std::string>> devices;
        std::map<int, std::string> selections;
        std::string error;
    };
    const std::vector<std::pair<std::string, std::string>> allDefaults = {
        {"default_headphone", "headphone"},
        {"default_bluetooth", "bluetooth"},
        {"default_usb", "usb"}};
    const Case cases[] = {
        {"bluetooth default missing",
         {{"default_headphone", "headphone"}, {"default_usb", "usb"}},
         {},
         "loadSpatializerXMLFile() default tuningDevice default_bluetooth is not available "
         "for port bluetooth."},
        {"only the first of two missing is reported",
         {{"default_usb", "usb"}},
         {},
         "loadSpatializerXMLFile() default tuningDevice default_headphone is not available "
         "for port headphone."},
        {"usb default filed for another port",
         {{"default_headphone", "headphone"},
          {"default_bluetooth", "bluetooth"},
          {"default_usb", "Usb"}},
         {},
         "loadSpatializerXMLFile() default tuningDevice default_usb is not available for "
         "port usb."},
        // Loading leaves an empty selection for the speaker when it has none.
        {"empty speaker selection comes first",
         allDefaults,
         {{DEVICE_INTERNAL_SPEAKER, ""}},
         "loadSpatializerXMLFile() default tuningDevice  is not available for port "
         "internal_speaker."},
        {"selection of a port outside the table",
         allDefaults,
         {{9, "default_usb"}},
         "loadSpatializerXMLFile() default tuningDevice default_usb is not available for "
         "port ?."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        mPeer.tuningDevicePorts().clear();
        mPeer.xmlTuningCount() = 0;
        for (const auto& [device, port] : c.devices) {
            mPeer.addTuningDevice(device, port);
        }
        mPeer.selectedTuningDevices() = {
            {3, "default_headphone"}, {4, "default_bluetooth"}, {5, "default_usb"}};
        for (const auto& [port, device] : c.selections) {
            mPeer.selectedTuningDevices()[port] = device;
        }
        ASSERT_GT(mPeer.xmlTuningCount(), 0);
        mLog.clear();
        mPeer.checkDefaultTuningDevices();
        EXPECT_EQ(0, mPeer.xmlTuningCount());
        std::vector<std::string> lines = errors();
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(c.error, lines.back());
        EXPECT_EQ(1u, mLog.count(c.error, kStoreLogTag));
    }
}

// Every query takes the store's lock; run under TSan this shows any that does not.
TEST_F(TuningDevicesTest, ConcurrentQueriesAndSelectionsStayConsistent) {
    android::base::SetProperty("persist.vendor.korva.loglevel", "0");
    auto selector = [this] {
        for (int i = 0; i < 500; i++) {
            mStore.setSelectedTuningDevice(DEVICE_HEADPHONE,
                                           i % 2 ? "hp_warm" : "default_headphone");
        }
    };
    auto reader = [this] {
        for (int i = 0; i < 500; i++) {
            std::string selected = mStore.getSelectedTuningDevice(DEVICE_HEADPHONE);
            EXPECT_TRUE(selected == "hp_warm" || selected == "default_headphone") << selected;
            EXPECT_EQ("default_headphone hp_warm", mStore.getAvailableTuningDevices(3));
            EXPECT_TRUE(mStore.isXMLTuningValid("default_usb"));
        }
    };
    std::thread a(selector);
    std::thread b(reader);
    std::thread c(selector);
    a.join();
    b.join();
    c.join();
}

}  // namespace
}  // namespace korva
