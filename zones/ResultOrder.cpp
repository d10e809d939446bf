#include "zones/ResultOrder.h"

#include "kernel/assertion.h"
#include "zones/ZoneRegistry.h"

#include <unordered_map>

namespace TESK_KIVO2D {

ResultOrder::ResultOrder(const ZoneRegistry& registry, const Zone2& zone) {
    std::unordered_map<const Zone2*, std::size_t> mStepOf; // for looking up only
    std::vector<const Zone2*> vStack = {&zone};
    while (!vStack.empty()) {
        const Zone2* const pZone = vStack.back();
        if (mStepOf.count(pZone) != 0) {
            vStack.pop_back();
            continue;
        }
        std::array<std::size_t, 2> aOperands = {0, 0};
        if (isResult(pZone->zoneLoc)) {
            KIVO_ASSERT(pZone->vInputZones.size() == 2, "vInputZones.size()==2");
            const std::size_t numOpen = vStack.size();
            // A result zone goes on top: it is evaluated before its partner, which then need not be kept
            // while a long chain is worked off.
            for (const bool bResults : {false, true}) {
                for (const Zone2::Operand& operand : pZone->vInputZones) {
                    if (!registry.isAlive(operand.pZone, operand.number)) {
                        vSteps.clear();
                        return;
                    }
                    if (isResult(operand.pZone->zoneLoc) == bResults && mStepOf.count(operand.pZone) == 0)
                        vStack.push_back(operand.pZone);
                }
            }
            if (vStack.size() > numOpen) continue;
            aOperands = {mStepOf.at(pZone->vInputZones[0].pZone), mStepOf.at(pZone->vInputZones[1].pZone)};
        }
        mStepOf.emplace(pZone, vSteps.size());
        vSteps.push_back({pZone, aOperands, false, false});
        vStack.pop_back();
    }
    findEnds();
}

void ResultOrder::findEnds() {
    std::vector<std::size_t> vLastUse(vSteps.size(), 0);
    const auto forEachOperand = [&](auto f) {
        for (std::size_t i = 0; i < vSteps.size(); ++i) {
            if (isResult(vSteps[i].pZone->getZoneLocation())) f(i, vSteps[i]);
        }
    };
    forEachOperand([&](std::size_t i, const Step& step) {
        for (const std::size_t operand : step.aOperands)
            vLastUse[operand] = i;
    });
    forEachOperand([&](std::size_t i, Step& step) {
        step.bFirstEnds = vLastUse[step.aOperands[0]] == i;
        step.bSecondEnds = vLastUse[step.aOperands[1]] == i;
    });
}

} // namespace TESK_KIVO2D
