// What may appear where in a tuning file as the tuning tool writes it: the structure from the
// reader's layout table, the parameter elements from its node table (placed by the records that
// hold their parameters), and what each becomes in the effect, measured by running the library's
// translators. The schema and completion both read it; neither decides what a file means.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace korva::tool {

struct GrammarAttribute {
    enum class Type { kText, kInt, kIntList, kScalar, kKeyword };

    GrammarAttribute(std::string name, Type type, std::vector<std::string> keywords = {},
                     std::string doc = "", bool required = true)
        : name(std::move(name)),
          type(type),
          keywords(std::move(keywords)),
          doc(std::move(doc)),
          required(required) {}

    std::string name;
    Type type = Type::kText;
    std::vector<std::string> keywords;  // the values of a kKeyword attribute
    std::string doc;
    bool required = true;
};

struct GrammarElement {
    GrammarElement() = default;
    explicit GrammarElement(std::string name, std::string doc = "")
        : name(std::move(name)), doc(std::move(doc)) {}

    std::string name;
    std::string doc;
    std::vector<GrammarAttribute> attributes;
    std::vector<GrammarElement> children;
    int minOccurs = 1;
    bool many = false;
    // One of its parent's run of interchangeable children, any number in any order.
    bool choice = false;
    // Holds the parameter elements of these records (kinds of the model), among choice children.
    std::vector<std::string> parameterRecords;
};

class TuningGrammar {
public:
    // Built once, on first use.
    static const TuningGrammar& get();

    const GrammarElement& root() const { return mRoot; }
    // Every parameter element of the node table, by name.
    const std::vector<GrammarElement>& parameters() const { return mParameters; }
    // The elements that may appear in element, in the grammar's order.
    std::vector<const GrammarElement*> childrenOf(const GrammarElement& element) const;
    // The element reached from the root by the names of the open elements (the root's first);
    // null when the path leaves the grammar.
    const GrammarElement* find(const std::vector<std::string>& path) const;
    // Whether a parameter element may appear among the records' parameters.
    bool holds(const GrammarElement& element, const GrammarElement& parameter) const;

private:
    TuningGrammar();

    GrammarElement mRoot;
    std::vector<GrammarElement> mParameters;
    std::vector<std::vector<std::string>> mRecordsOf;  // per parameter: the records holding it
};

}  // namespace korva::tool
