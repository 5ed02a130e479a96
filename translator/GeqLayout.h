// The effect's graphic-EQ parameter ("gebs"): one entry of the band count, the band centre
// frequencies, then the band gains. The effect takes it only with exactly its 20 bands; the
// user's gains of a profile go where the gains are.
#pragma once

namespace korva {

constexpr int kGeqBands = 20;
constexpr int kGeqFrequenciesOffset = 1;
constexpr int kGeqGainsOffset = kGeqFrequenciesOffset + kGeqBands;
constexpr int kGeqWords = kGeqGainsOffset + kGeqBands;

static_assert(kGeqWords == 41, "band count, 20 frequencies, 20 gains");

}  // namespace korva
