// Tuning devices per output port: what each port offers, which device is selected, the mix
// matrices per device, and the start-up check of the default selections.

#include "StoreTest.h"
#include "model/Parameter.h"

namespace korva::test {
namespace {

class TuningDevicesTest : public StoreTest {
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
    const struct {
        int port;
        std::string devices;
    } cases[] = {{DEVICE_INTERNAL_SPEAKER, "speaker_main"},
                 {DEVICE_HDMI, "a bc"},
                 {DEVICE_MIRACAST, ""},
                 {DEVICE_HEADPHONE, "default_headphone hp_warm"},
                 {DEVICE_BLUETOOTH, "default_bluetooth"},
                 {DEVICE_OTHER, ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(kAndroidDeviceNames[c.port]);
        EXPECT_EQ(c.devices, mStore.getAvailableTuningDevices(c.port));
        // The length is the buffer that holds the names and their terminating zero.
        EXPECT_EQ(c.devices.empty() ? 0 : c.devices.size() + 1,
                  mStore.getAvailableTuningDevicesLen(c.port));
    }
    EXPECT_TRUE(errors().empty());
}

// The speaker's tuning bound without a device id has the empty name, which sorts first: the
// blank that precedes every later match then leads the list, and alone it is an empty list whose
// buffer still holds one terminating zero.
TEST_F(TuningDevicesTest, EmptyNamedDeviceIsAMatchLikeAnyOther) {
    mPeer.addTuningDevice("", "internal_speaker");
    EXPECT_EQ(" speaker_main", mStore.getAvailableTuningDevices(DEVICE_INTERNAL_SPEAKER));
    EXPECT_EQ(14u, mStore.getAvailableTuningDevicesLen(DEVICE_INTERNAL_SPEAKER));
    mPeer.addTuningDevice("", "miracast");
    EXPECT_EQ("", mStore.getAvailableTuningDevices(DEVICE_MIRACAST));
    EXPECT_EQ(1u, mStore.getAvailableTuningDevicesLen(DEVICE_MIRACAST));
}

// A port outside the name table is the caller's mistake: it matches nothing, is reported and
// never reads past the table.
TEST_F(TuningDevicesTest, PortsOutsideTheTableMatchNothing) {
    for (int port : {-1, 7, -2147483647 - 1}) {
        SCOPED_TRACE(port);
        mLog.clear();
        EXPECT_EQ("", mStore.getAvailableTuningDevices(port));
        EXPECT_EQ(0u, mStore.getAvailableTuningDevicesLen(port));
        EXPECT_FALSE(mStore.isValidTuningDevice(port, "default_headphone"));
        EXPECT_EQ(-22, mStore.setSelectedTuningDevice(port, "default_headphone"));
        const std::string unknown = "port " + std::to_string(port) + " is not a known port";
        EXPECT_EQ((Lines{
                      "getAvailableTuningDevices(): " + unknown,
                      "getAvailableTuningDevicesLen(): " + unknown,
                      "isValidTuningDevice(): " + unknown,
                      "setSelectedTuningDevice(): " + unknown,
                      "setSelectedTuningDevice tuningDevice default_headphone is not available "
                      "for port ?.",
                  }),
                  errors());
    }
}

TEST_F(TuningDevicesTest, SelectionTakesOnlyADeviceOfThatExactPort) {
    const struct {
        int port;
        const char* device;
        bool valid;
    } cases[] = {
        {DEVICE_HEADPHONE, "speaker_main", false},
        {DEVICE_HEADPHONE, "missing", false},
        {DEVICE_HEADPHONE, "loud", false},
        {DEVICE_HEADPHONE, "louder", false},
        {DEVICE_HEADPHONE, "Hp_warm", false},
        {DEVICE_HEADPHONE, "", false},
        {DEVICE_USB, "default_bluetooth", false},
        {DEVICE_HEADPHONE, "hp_warm", true},
        {DEVICE_MIRACAST, "a", false},
        // A port without a selection gets one.
        {DEVICE_HDMI, "a", true},
    };
    for (const auto& c : cases) {
        const std::string port = kAndroidDeviceNames[c.port];
        SCOPED_TRACE(port + "/" + c.device);
        const std::string before = mStore.getSelectedTuningDevice(c.port);
        mLog.clear();
        EXPECT_EQ(c.valid, mStore.isValidTuningDevice(c.port, c.device));
        EXPECT_EQ(c.valid ? 0 : -22, mStore.setSelectedTuningDevice(c.port, c.device));
        EXPECT_EQ(c.valid ? c.device : before, mStore.getSelectedTuningDevice(c.port));
        EXPECT_EQ(c.valid ? Lines{}
                          : Lines{std::string("setSelectedTuningDevice tuningDevice ") + c.device +
                                  " is not available for port " + port + "."},
                  errors());
        EXPECT_EQ(Lines{"setSelectedTuningDevice(port=" + port + ", device=" + c.device + ")"},
                  storeLines(ANDROID_LOG_DEBUG));
    }
}

// The cache keeps the reference, and asking must not file a matrix for the device.
TEST_F(TuningDevicesTest, MixMatrixOfADeviceWithoutOneIsEmptyAndWarned) {
    EXPECT_EQ(&mPeer.tuningMixMatrices()["default_headphone"],
              &mStore.getXMLTuningMixMatrix("default_headphone"));
    EXPECT_TRUE(mStore.getXMLTuningMixMatrix("nowhere").empty());
    EXPECT_EQ(0u, mPeer.tuningMixMatrices().count("nowhere"));
    EXPECT_EQ(Lines{"getXMLTuningMixMatrix(): no mix matrix found with tuning device nowhere"},
              storeLines(ANDROID_LOG_WARN));
}

// Loading ends with this check. A missing default for the speaker or a single port is seen end to
// end; here, that only the first missing one is reported.
TEST_F(TuningDevicesTest, FirstMissingDefaultDisablesEveryTuning) {
    const int count = mPeer.xmlTuningCount();
    mPeer.checkDefaultTuningDevices();
    EXPECT_EQ(count, mPeer.xmlTuningCount());
    EXPECT_TRUE(errors().empty());

    mPeer.tuningDevicePorts().erase("default_headphone");
    mPeer.tuningDevicePorts().erase("default_usb");
    mPeer.checkDefaultTuningDevices();
    EXPECT_EQ(0, mPeer.xmlTuningCount());
    EXPECT_EQ(Lines{"loadSpatializerXMLFile() default tuningDevice default_headphone is not "
                    "available for port headphone."},
              errors());
}

}  // namespace
}  // namespace korva::test
