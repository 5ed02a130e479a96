// The effect engine's parameters. Each is known to the engine by a 32-bit code that packs its
// lower-case name, first character in the least significant byte.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

namespace korva {

enum VexParameter {
    VOL = 0,
    PSTG = 1,
    PREG = 2,
    PLB = 3,
    NGON = 4,
    DEON = 5,
    DEA = 6,
    DED = 7,
    VMB = 8,
    DVME = 9,
    DVMC = 10,
    DVLE = 11,
    DVLA = 12,
    DVLI = 13,
    DVLO = 14,
    DVLC = 15,
    IEON = 16,
    IEA = 17,
    AROD = 18,
    ARTP = 19,
    GEON = 20,
    AOON = 21,
    VER = 22,
    IEBS = 23,
    ARDS = 24,
    ARON = 25,
    ARDE = 26,
    ARSA = 27,
    ARBS = 28,
    ARTI = 29,
    DOM = 30,
    DSB = 31,
    GEBS = 32,
    BEON = 33,
    BEB = 34,
    BECF = 35,
    BEW = 36,
    VBON = 37,
    VBM = 38,
    VBSF = 39,
    VBOG = 40,
    VBSG = 41,
    VBHG = 42,
    VBMF = 43,
    VBBG = 44,
    VBCG = 45,
    VBCT = 46,
    VBHM = 47,
    VBHB = 48,
    VBMX = 49,
    VBRG = 50,
    AOBS = 51,
    MSCE = 52,
    MIEE = 53,
    MDLE = 54,
    MDEE = 55,
    MAVE = 56,
    VNBS = 57,
    DMC = 58,
    DHFM = 59,
    DFSA = 60,
    DSA = 61,
    DHSA = 62,
    DRSA = 63,
    DRHA = 64,
    SVSB = 65,
    CEON = 66,
    CEQT = 67,
    DPLP = 68,
    MVBE = 69,
    RSSE = 70,
    RSSA = 71,
    IEID = 72,
    DRCM = 73,
    HPON = 74,
    HPTW = 75,
    HPAT = 76,
    HPAA = 77,
    HPAR = 78,
    BMDE = 79,
    BMDT = 80,
    RVSE = 81,
    RVSA = 82,
    VSSD = 83,
    SVM = 84,
    SVRC = 85,
    AVSB = 86,
    HVM = 87,
    HVRC = 88,
    HLRA = 89,
    SDFA = 90,
    HFON = 91,
    HFCF = 92,
    DSOE = 93,
    DSOA = 94,
    DSOI = 95,
};

constexpr int kNumVexParameters = 96;

// Upper-case name text of each VexParameter, indexed by value.
extern const char* const kVexParameterNames[kNumVexParameters];

// The engine code of a name: ASCII upper-case letters folded to lower case, packed little-endian
// (first character in the lowest byte); 0 for a name shorter than 1 or longer than 4 characters.
// Usable in constant expressions, so that fixed tables of codes cost nothing at start-up.
constexpr int32_t vexParameterCode(const char* name) {
    uint32_t code = 0;
    int length = 0;
    for (; name[length] != '\0'; length++) {
        if (length == 4) {
            return 0;
        }
        uint32_t c = static_cast<unsigned char>(name[length]);
        if (c >= 'A' && c <= 'Z') {
            c |= 0x20;
        }
        code |= c << (8 * length);
    }
    return static_cast<int32_t>(code);
}

int32_t vexParameterCode(VexParameter param);

// The name that a code packs, as the engine spells it: the code's bytes up to the first zero.
inline std::string vexParameterText(int32_t code) {
    char text[sizeof(code) + 1] = {};
    memcpy(text, &code, sizeof(code));
    return text;
}

}  // namespace korva
