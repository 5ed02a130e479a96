#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "ScopedHostRoot.h"
#include "model/DeviceTuning.h"
#include "model/ParameterValues.h"
#include "observer/LoadObserver.h"
#include "reader/NodeInfo.h"
#include "store/SpatializerParamArray.h"

namespace korva {
namespace {

// Writes each event as one line "LINE what details", in the order they came.
class EventLog : public LoadObserver {
public:
    std::vector<std::string> lines;

    void onSkipped(const xmlNode* node, Skip why) override {
        static const char* const kWhy[] = {"not-element", "no-setter", "unknown",   "stepped-over",
                                           "not-walked",  "after-cut", "ends-list", "version"};
        add(node, std::string("skip ") + kWhy[static_cast<int>(why)] + " " + name(node));
    }
    void onLookup(const xmlNode* node, Structure, bool found) override {
        add(node, std::string("lookup ") + (found ? "found " : "missed ") + name(node));
    }
    void onNumber(const xmlNode* node, const char* attribute, const std::string& text, int value,
                  NumberRead how) override {
        if (how != NumberRead::kWhole && how != NumberRead::kWord) {
            add(node,
                std::string("number ") + attribute + " '" + text + "' " + std::to_string(value));
        }
    }
    void onAttribute(const xmlNode* node, const char* attribute, const std::string&,
                     AttributeRead how) override {
        if (how != AttributeRead::kRead) {
            add(node,
                std::string(how == AttributeRead::kMissing ? "missing " : "ignored ") + attribute);
        }
    }
    void onValue(const xmlNode* node, const ParameterValues&, Parameter parameter,
                 const std::vector<int>& values, ValueSource source) override {
        if (source == ValueSource::kTranslatorEmpty || source == ValueSource::kBefore34) {
            add(node, std::string(source == ValueSource::kBefore34 ? "before34 " : "empty ") +
                          kParameterNames[parameter] + " " + std::to_string(values.size()));
        }
    }
    void onBlobFiled(const BlobKey& blob, const std::vector<int>& words, BlobFate fate) override {
        static const char* const kFate[] = {"stored", "dropped", "replaced"};
        lines.push_back(std::string("blob ") +
                        (blob.isTuning ? blob.device : std::to_string(blob.profileId)) + " " +
                        kFate[static_cast<int>(fate)] + " " + std::to_string(words.at(1)));
    }
    void onDefaultSelectionMissing(int port, const std::string& device) override {
        lines.push_back("default-missing " + std::to_string(port) + " '" + device + "'");
    }
    void onPartnerMissing(MissingPartner what, const ParameterValues*,
                          const DeviceTuning* binding) override {
        lines.push_back("partner-missing " + std::to_string(static_cast<int>(what)) +
                        (binding != nullptr ? " " + binding->getTuning() : ""));
    }

private:
    static std::string name(const xmlNode* node) {
        return NodeInfo::isComment(node) ? "comment" : NodeInfo::nameOf(node);
    }
    void add(const xmlNode* node, const std::string& text) {
        const NodeInfo::Line line = NodeInfo::lineOf(node);
        lines.push_back(std::to_string(line.line) + (line.atLeast ? "+ " : " ") + text);
    }
};

// Starts the store, with `observer` listening, on the document, which the store finds at its
// vendor path.
SpatializerParamArray& startOn(const std::string& document, LoadObserver* observer) {
    test::ScopedHostRoot root;
    const std::string path = "/vendor/etc/korva/kvx-default-spatializer.xml";
    root.addFile(path);
    std::ofstream(root.path() + path) << document;
    LoadObserver::Scope scope(observer);
    return SpatializerParamArray::getInstance();
}

// The events of one store start on the document.
std::vector<std::string> eventsOf(const std::string& document) {
    EventLog log;
    startOn(document, &log);
    return log.lines;
}

void expectAll(const std::vector<std::string>& events, const std::vector<std::string>& expected) {
    for (const std::string& line : expected) {
        EXPECT_NE(events.end(), std::find(events.begin(), events.end(), line))
            << "no event \"" << line << "\" among:\n"
            << ::testing::PrintToString(events);
    }
}

const char* const kHeader =
    "<?xml version=\"1.0\"?>\n<t>\n  <format_version major=\"3\" minor=\"4\" maintenance=\"0\"/>\n";

// The reader's account: a comment stepped over in place of the indentation makes the include
// lookup miss and the include fall to the parameter walk; numbers read in part, attributes
// missing or unused, elements nobody reads, each at its line.
TEST(LoadObserverTest, ReaderReportsWhatItPassedOver) {
    const std::vector<std::string> events =
        eventsOf(std::string(kHeader) +
                 "  <profile id=\"1\" name=\"movie\">\n"                         // 4
                 "    <data>\n"                                                  // 5
                 "      <endpoint_type id=\"speaker\"><!-- note -->\n"           // 6
                 "        <include ieq_preset=\"2\"/>\n"                         // 7
                 "        <volume-leveler-amount value=\"1.5\" vaule=\"2\"/>\n"  // 8
                 "      </endpoint_type>\n"
                 "    </data>\n"
                 "    <extra/>\n"  // 11
                 "  </profile>\n"
                 "  <mystery/>\n"  // 13
                 "  <tuning name=\"t\"><device_id id=\"d\" endpoint_port=\"usb\"/></tuning>\n"  // 14
                 "  <profile id=\"2\" name=\"late\"/>\n"  // 15
                 "</t>\n");
    expectAll(events,
              {"6 skip stepped-over comment", "7 lookup missed text", "7 skip no-setter include",
               "8 number value '1.5' 1", "8 ignored vaule", "11 skip not-walked extra",
               "13 skip unknown mystery", "14 missing orientation",
               "14 skip stepped-over device_id", "15 skip after-cut profile"});
}

// A listener's copy of the document pairs every node the reader reports with its own counterpart,
// and editing the copy leaves the reading alone.
class CopyingLog : public LoadObserver {
public:
    std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> copy{nullptr, xmlFreeDoc};
    std::unordered_map<const xmlNode*, xmlNode*> counterparts;
    std::vector<std::string> mismatches;
    std::set<const xmlNode*> checked;

    void onStructure(const xmlNode* node, Structure) override { check(node); }
    void onSkipped(const xmlNode* node, Skip) override { check(node); }

private:
    void check(const xmlNode* node) {
        if (copy == nullptr) {
            copy.reset(NodeInfo::copyDocument(node, &counterparts));
        }
        if (!checked.insert(node).second) {
            return;
        }
        auto found = counterparts.find(node);
        xmlNode* twin = found != counterparts.end() ? found->second : nullptr;
        // libxml2 copies the line numbers of elements only.
        if (twin == nullptr || twin == node || twin->doc != copy.get() ||
            twin->type != node->type || NodeInfo::nameOf(twin) != NodeInfo::nameOf(node) ||
            (NodeInfo::isElement(node) &&
             NodeInfo::lineOf(twin).line != NodeInfo::lineOf(node).line)) {
            mismatches.push_back(std::to_string(NodeInfo::lineOf(node).line) + " " +
                                 NodeInfo::nameOf(node));
        }
        if (NodeInfo::isElement(twin)) {
            xmlNodeSetName(twin, reinterpret_cast<const xmlChar*>(".edited"));
        }
    }
};

TEST(LoadObserverTest, DocumentCopyPairsEveryReportedNode) {
    CopyingLog log;
    SpatializerParamArray& store =
        startOn(std::string(kHeader) +
                    "  <profile id=\"1\" name=\"movie\">\n    <data><!-- c -->\n"
                    "      <endpoint_type id=\"speaker\"/>\n    </data>\n  </profile>\n"
                    "  <mystery/>\n</t>\n",
                &log);
    ASSERT_NE(nullptr, log.copy);
    EXPECT_GE(log.checked.size(), 4u);
    EXPECT_TRUE(log.mismatches.empty()) << ::testing::PrintToString(log.mismatches);
    // The copy's elements were renamed as they were reported; the reader read the original.
    EXPECT_TRUE(store.isXMLProfileValid(1));
}

// The loader's account: the second profile of an id is built, with the endpoints of both, and
// dropped; a parameter the file lacks reaches the effect with no values; partners are missing
// (GEQ preset, IEQ preset, a port without a device, a tuning); the missing default disables the
// tunings.
TEST(LoadObserverTest, LoaderReportsWhereRecordsWent) {
    const std::vector<std::string> events = eventsOf(
        std::string(kHeader) +
        "  <profile id=\"1\" name=\"a\">\n"
        "    <data>\n      <endpoint_type id=\"speaker\"/>\n    </data>\n"
        "  </profile>\n"
        "  <profile id=\"1\" name=\"b\">\n    <data/>\n  </profile>\n"
        "  <tuning name=\"t\">\n    <device_id id=\"\" endpoint_port=\"internal_speaker\"/>\n"
        "    <data/>\n  </tuning>\n"
        "  <tuning name=\"v\">\n    <device_id id=\"z\" endpoint_port=\"mars\"/>\n"
        "    <data/>\n  </tuning>\n"
        "  <tuning name=\"q\">\n    <device_id id=\"o\" endpoint_port=\"usb\"/>\n  </tuning>\n"
        "</t>\n");
    expectAll(events, {"blob 1 stored 40", "blob 1 dropped 40", "blob  stored 40",
                       "blob z stored 40", "0 empty volume_modeler_enable 0", "partner-missing 0",
                       "partner-missing 1", "partner-missing 4 v", "partner-missing 3 q",
                       "default-missing 3 'default_headphone'"});
}

}  // namespace
}  // namespace korva
