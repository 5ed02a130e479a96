#include "translator/VexParameter.h"

#include <array>

namespace korva {

const char* const kVexParameterNames[kNumVexParameters] = {
        "VOL", "PSTG", "PREG", "PLB", "NGON", "DEON", "DEA", "DED", "VMB", "DVME", "DVMC",
        "DVLE", "DVLA", "DVLI", "DVLO", "DVLC", "IEON", "IEA", "AROD", "ARTP", "GEON",
        "AOON", "VER", "IEBS", "ARDS", "ARON", "ARDE", "ARSA", "ARBS", "ARTI", "DOM", "DSB",
        "GEBS", "BEON", "BEB", "BECF", "BEW", "VBON", "VBM", "VBSF", "VBOG", "VBSG", "VBHG",
        "VBMF", "VBBG", "VBCG", "VBCT", "VBHM", "VBHB", "VBMX", "VBRG", "AOBS", "MSCE",
        "MIEE", "MDLE", "MDEE", "MAVE", "VNBS", "DMC", "DHFM", "DFSA", "DSA", "DHSA",
        "DRSA", "DRHA", "SVSB", "CEON", "CEQT", "DPLP", "MVBE", "RSSE", "RSSA", "IEID",
        "DRCM", "HPON", "HPTW", "HPAT", "HPAA", "HPAR", "BMDE", "BMDT", "RVSE", "RVSA",
        "VSSD", "SVM", "SVRC", "AVSB", "HVM", "HVRC", "HLRA", "SDFA", "HFON", "HFCF",
        "DSOE", "DSOA", "DSOI"
};

int32_t vexParameterCode(VexParameter param) {
    // Every entry of every blob asks for its code: pack the names once.
    static const std::array<int32_t, kNumVexParameters> sCodes = [] {
        std::array<int32_t, kNumVexParameters> codes{};
        for (int i = 0; i < kNumVexParameters; i++) {
            codes[i] = vexParameterCode(kVexParameterNames[i]);
        }
        return codes;
    }();
    return sCodes[param];
}

}  // namespace korva
