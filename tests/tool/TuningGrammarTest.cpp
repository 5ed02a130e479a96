// The grammar behind the schema and completion, held against the library's own tables: every
// setter has its element, every element a place, and what the documentation says an element
// becomes agrees with the translators.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "model/Parameter.h"
#include "reader/SetterCollection.h"
#include "tools/schema/TuningGrammar.h"
#include "translator/SimpleTranslator.h"
#include "translator/TranslatorCollection.h"
#include "translator/VexParameter.h"

namespace korva::tool {
namespace {

const GrammarElement* parameterNamed(const std::string& name) {
    for (const GrammarElement& element : TuningGrammar::get().parameters()) {
        if (element.name == name) return &element;
    }
    return nullptr;
}

TEST(TuningGrammarTest, EverySetterHasAnElementThatSomeRecordHolds) {
    const TuningGrammar& grammar = TuningGrammar::get();
    const GrammarElement* records[] = {
        grammar.find({"kvx_spatializer_tuning", "profile", "data"}),
        grammar.find({"kvx_spatializer_tuning", "profile", "data", "endpoint_type"}),
        grammar.find({"kvx_spatializer_tuning", "tuning", "data"}),
    };
    for (const GrammarElement* record : records) {
        ASSERT_NE(record, nullptr);
    }
    std::set<std::string> listed;
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        const std::string name = setter->getNodeName();
        // The preset lists sit below a preset's data, not among a record's parameters.
        if (name == "ieq" || name == "geq") {
            EXPECT_NE(grammar.find({"korva_tuning", "preset", "data", name}), nullptr);
            continue;
        }
        SCOPED_TRACE(name);
        const GrammarElement* element = parameterNamed(name);
        ASSERT_NE(element, nullptr);
        // A setter of a kind the grammar does not know would come out with nothing to write.
        EXPECT_FALSE(element->attributes.empty() && element->children.empty());
        EXPECT_FALSE(element->doc.empty());
        int holders = 0;
        for (const GrammarElement* record : records) {
            holders += grammar.holds(*record, *element);
        }
        EXPECT_GT(holders, 0);
        listed.insert(name);
    }
    EXPECT_EQ(listed.size() + 2, SetterCollection::kAllValueSetters.size());
}

TEST(TuningGrammarTest, DocumentationNamesTheCodeOfEveryOneToOneTranslation) {
    int checked = 0;
    for (Translator* translator : TranslatorCollection::kAllTranslators) {
        auto* simple = dynamic_cast<SimpleTranslator*>(translator);
        if (simple == nullptr) continue;
        const std::string parameter = kParameterNames[simple->getSrcParams()[0]];
        const std::string code = vexParameterText(vexParameterCode(simple->getTarget()));
        for (const GrammarElement& element : TuningGrammar::get().parameters()) {
            if (element.doc.rfind(parameter + ":", 0) == 0) {
                EXPECT_NE(element.doc.find("effect " + code), std::string::npos)
                    << element.name << ": " << element.doc;
                checked++;
            }
        }
    }
    EXPECT_GT(checked, 50);
}

TEST(TuningGrammarTest, PathsOutsideTheGrammarFindNothing) {
    const TuningGrammar& grammar = TuningGrammar::get();
    EXPECT_EQ(grammar.find({}), nullptr);
    EXPECT_EQ(grammar.find({"setters"}), nullptr);
    EXPECT_EQ(grammar.find({"korva_tuning", "profile", "volmax-boost"}), nullptr);
    EXPECT_EQ(grammar.find({"korva_tuning", "tuning", "data", "volmax-boost"}), nullptr);
    EXPECT_NE(grammar.find({"korva_tuning", "tuning", "data", "output-mode", "mix_matrices", "lfe"}),
              nullptr);
}

}  // namespace
}  // namespace korva::tool
