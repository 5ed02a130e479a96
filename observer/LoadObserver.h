// The library's own account of a load: what the reader read from which element, what it passed
// over and why, which values a rule wrote instead of the file, and where each record went in the
// blobs. A listener registers for the calling thread around a parse or a store's construction;
// the reader, the value setters, the translators and the loader call it as they work.
//
// Events carry the library's own data (libxml2 nodes, records, the strings it already holds) and
// no formatted text. With nobody registered, each event costs one test of a process-wide count;
// in a build without the report (observer/ListenerRegistry.h) it costs nothing.
// Nodes and records are valid only during the call: copy what is needed.
#pragma once

#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <string>
#include <vector>

#include "model/Parameter.h"
#include "observer/ListenerRegistry.h"

namespace korva {

class DeviceTuning;
class ParameterValues;
class TuningFileParser;
class Translator;
class ValueSetter;

enum class RecordKind : uint8_t {
    kIeqPreset,
    kGeqPreset,
    kProfile,
    kProfileEndpoint,
    kTuning,
};

// The elements the reader recognises by name or by place, besides the parameter elements.
enum class Structure : uint8_t {
    kToolVersion,
    kFormatVersion,
    kAuthorizedTechnologies,
    kGlobalSetting,
    kPreset,            // followed by its record, unless its type is neither ieq nor geq
    kProfile,           // followed by its record
    kProfileData,       // the node stepped onto as a profile's parameter wrapper
    kProfileIeqSwitch,  // ieq-enable or ieq-amount inside a profile, passed on to its endpoints
    kEndpoint,          // followed by its record
    kTuning,            // followed by its record
    kDeviceBinding,     // followed by onDeviceTuning
    kTuningData,        // the node that stopped the binding walk, read as the tuning's data
    kInclude,           // the IEQ preset include of an endpoint (or of a 3.2 profile)
    kSetterLevel,       // a node a multi-level setter stepped onto on its way down
    kSetterRow,         // a band or matrix row read by a setter
};

enum class Skip : uint8_t {
    kNotElement,   // a comment or a text with content, met by a walk
    kNoSetter,     // an element in a record's data that no setter reads (also unknown names)
    kUnknown,      // an element in a structural walk that the reader does not know
    kSteppedOver,  // the first child of an element stepped into
    kNotWalked,    // no walk reached it: outside the wrapper or level that was walked
    kAfterCut,     // after the walk of the document was cut short
    kEndsList,     // an element of another name that ended a list of bands
    kVersionRule,  // the file's format version makes the reader pass over it
};

// How an attribute was read from an element.
enum class AttributeRead : uint8_t {
    kRead,     // its value was used
    kMissing,  // asked for but absent: read as empty
    kIgnored,  // present but not used
};

// How a text became an int.
enum class NumberRead : uint8_t {
    kWhole,    // the whole text was one decimal int (leading blanks allowed)
    kPart,     // an int was read from the text's start; the rest was passed over
    kNone,     // no digits: read as 0
    kClamped,  // out of the int range: clamped to the nearest limit
    kWord,     // "true" or "false", read as 1 or 0
};

// Who wrote a value into a record.
enum class ValueSource : uint8_t {
    kFile,               // a value setter, from the element
    kRecordAttribute,    // an attribute of the record's own element (a tuning's orientation...)
    kVersion32,          // the fixed values of 3.2 files
    kVersion322,         // the fixed values of 3.2.2 files
    kBefore34,           // the fixed values of files before 3.4
    kGlobalSetting,      // from <global_setting> (or the 3.2 rule that replaces it)
    kProfileIeqSwitch,   // a 3.2 profile's ieq-enable/ieq-amount, given to its endpoints
    kDialogSteering,     // the steering list extended by the dialog enhancer's switch
    kLoaderOrientation,  // the loader's fixed orientation of speaker and headphone endpoints
    kLoaderMixMatrix,    // the speaker tuning's mix matrix (or the default one)
    kLoaderVbMode,       // the speaker tuning's vb mode (or the default one)
    kTranslator,         // changed by the translator reported next
    kTranslatorEmpty,    // absent, read by the translator reported next as an empty list
};

enum class LoaderDefault : uint8_t { kMixMatrix, kVbMode };

enum class MissingPartner : uint8_t {
    kGeqPreset,      // a profile without a GEQ preset of its id: no GEQ entries, no user gains
    kIeqPreset,      // an endpoint whose IEQ preset id matches no preset
    kEndpointOther,  // an endpoint for the endpoint other: nothing is translated
    kTuning,         // a device binding whose tuning name matches no tuning
    kPortDevice,     // a device binding whose port has no output device: its entries get device 0
};

enum class BlobFate : uint8_t {
    kStored,
    kDropped,   // a profile id already had its blob: the first one read is kept
    kReplaced,  // a tuning device name already had its blob: this one replaces it
};

// Which blob is being built: a profile's (device empty) or a tuning device's.
struct BlobKey {
    bool isTuning;
    int profileId;
    const std::string& device;
};

class LoadObserver : public ListenerRegistry<LoadObserver> {
public:
    virtual ~LoadObserver();

    // The reader.
    virtual void onReadFailed(const std::string& /*path*/, int /*status*/,
                              const xmlError* /*error*/) {}
    virtual void onStructure(const xmlNode* /*node*/, Structure /*what*/) {}
    virtual void onSkipped(const xmlNode* /*node*/, Skip /*why*/) {}
    // The node that was looked at for an element that a step expects there, and whether it was.
    virtual void onLookup(const xmlNode* /*lookedAt*/, Structure /*expected*/, bool /*found*/) {}
    virtual void onAttribute(const xmlNode* /*element*/, const char* /*name*/,
                             const std::string& /*text*/, AttributeRead /*how*/) {}
    virtual void onNumber(const xmlNode* /*element*/, const char* /*attribute*/,
                          const std::string& /*text*/, int /*value*/, NumberRead /*how*/) {}
    // A list of ints read from text; whole is false when reading stopped before its end. For
    // the lists that bands join, element is the band whose value stopped the reading.
    virtual void onNumberList(const xmlNode* /*element*/, const char* /*attribute*/,
                              const std::string& /*text*/, const std::vector<int>& /*values*/,
                              bool /*whole*/) {}
    // A word with a meaning: recognised is false when the text fell to the default meaning.
    virtual void onKeyword(const xmlNode* /*element*/, const char* /*attribute*/,
                           const std::string& /*text*/, int /*value*/, bool /*recognised*/) {}
    virtual void onRecord(const xmlNode* /*element*/, const ParameterValues& /*record*/,
                          RecordKind /*kind*/) {}
    virtual void onDeviceTuning(const xmlNode* /*element*/, const DeviceTuning& /*binding*/) {}
    // A tuning without a data element, deleted before the walk of the document was cut.
    virtual void onRecordDropped(const ParameterValues& /*record*/) {}
    // A setter starts reading the element into the record. The setters and translators are the
    // library's own, alive for the whole process: their names and sources may be asked for.
    virtual void onSetter(const xmlNode* /*element*/, ValueSetter& /*setter*/,
                          const ParameterValues& /*record*/) {}
    // A value written into a record; element is null where no element is the cause.
    virtual void onValue(const xmlNode* /*element*/, const ParameterValues& /*record*/,
                         Parameter /*parameter*/, const std::vector<int>& /*values*/,
                         ValueSource /*source*/) {}
    // The whole document has been read (or its reading cut): the parser holds every record.
    virtual void onParsed(TuningFileParser& /*parser*/) {}

    // The translators.
    virtual void onTranslated(Translator& /*translator*/, const ParameterValues& /*record*/,
                              int /*deviceId*/, int /*firstEntry*/, int /*endEntry*/) {}

    // The loader.
    virtual void onSpeakerTuning(const DeviceTuning* /*binding*/,
                                 const ParameterValues* /*tuning*/) {}
    virtual void onLoaderDefault(LoaderDefault /*what*/) {}
    virtual void onBlobBegin(const BlobKey& /*blob*/) {}
    virtual void onPartnerMissing(MissingPartner /*what*/, const ParameterValues* /*record*/,
                                  const DeviceTuning* /*binding*/) {}
    virtual void onBlobFiled(const BlobKey& /*blob*/, const std::vector<int>& /*words*/,
                             BlobFate /*fate*/) {}
    // A default selection that is not a tuning device of its port: every tuning is disabled.
    virtual void onDefaultSelectionMissing(int /*port*/, const std::string& /*device*/) {}
    virtual void onLoadEnd() {}
};

#ifdef KORVA_LOAD_REPORT
extern template class ListenerRegistry<LoadObserver>;
#endif

}  // namespace korva
