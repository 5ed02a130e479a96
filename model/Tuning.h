// A named set of device-level parameters made for one endpoint; device tunings refer to it by
// name.
#pragma once

#include <map>
#include <set>
#include <string>

#include "model/Parameter.h"
#include "model/ParameterValues.h"

namespace korva {

class Tuning : public ParameterValues {
public:
    // A tuning made in memory is read-only: only one read with its id can be writable.
    Tuning(std::string name, Endpoint endpoint, bool mono);
    Tuning(long id, std::string name, Endpoint endpoint, bool mono, bool readonly);

    int64_t getId() const override;
    ~Tuning() override;
    const std::set<Parameter>& getValidParams() const override;

    std::string getName() const;
    Endpoint getEndpoint() const;
    // Takes the endpoint's name as written in a tuning file; an unknown name (the lookup is
    // case-sensitive) leaves the endpoint as it was.
    void setEndpoint(std::string name);
    void setMono(bool mono);
    bool isMono() const;
    bool isReadonly() const;
    std::string toString() const;

    // Refers to a set built on first use, so that code running during static initialisation
    // (the translators) can rely on it.
    static const std::set<Parameter>& kValidParams;
    static const std::map<std::string, Endpoint> kEndpNameToEndpoint;

private:
    std::string mName;
    Endpoint mEndpoint;
    bool mMono;
    bool mReadonly;
};

}  // namespace korva
