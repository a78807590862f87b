// The six techniques in the order a sweep applies them, each in its three forms: on the
// texts quietly, on the texts explained, and on digit masks. The solve driver, the mask
// sweeps, the technique tally and the command-line names all read this one table.
#pragma once

#include <array>

#include "solver/mask_sweeps.h"
#include "solver/techniques.h"

namespace qm {

struct SweepTechnique {
  Technique quiet;      // tally slot when run quietly (and on masks)
  Technique explained;  // tally slot when every change is explained
  void (*onTexts)(PuzzleModel&, RunHooks&);
  void (*onTextsExplained)(PuzzleModel&, RunHooks&);
  int (*onMasks)(MaskGrid&);
};

inline constexpr std::array<SweepTechnique, 6> kSweepOrder = {{
    {Technique::RemoveSingles, Technique::RemoveSingles, RemoveSingles, RemoveSingles, RemoveSinglesOnMasks},
    // Signs are explained one discarded digit at a time, a different walk over them.
    {Technique::OrderPropagate, Technique::OrderPropagateExplained, OrderPropagate, OrderPropagateExplained,
     OrderPropagateOnMasks},
    {Technique::HiddenSingle, Technique::HiddenSingle, HiddenSingle, HiddenSingle, HiddenSingleOnMasks},
    {Technique::NakedPair, Technique::NakedPair, NakedPair, NakedPair, NakedPairOnMasks},
    {Technique::NakedTriple, Technique::NakedTriple, NakedTriple, NakedTriple, NakedTripleOnMasks},
    {Technique::NakedQuad, Technique::NakedQuad, NakedQuad, NakedQuad, NakedQuadOnMasks},
}};

}  // namespace qm
