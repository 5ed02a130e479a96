// Placeholder until loading of the tuning file lands: the store then serves its built-in
// tables only, as it does for a file that cannot be read.

#include "store/LogLevel.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"

namespace korva {

void SpatializerParamArray::loadSpatializerXMLFile(std::string path) {
    KORVA_LOGD(kStoreLogTag, "%s(%s)", __func__, path.c_str());
}

}  // namespace korva
