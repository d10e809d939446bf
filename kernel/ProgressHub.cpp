#include "kernel/ProgressHub.h"

#include <algorithm>

namespace TESK_KIVO2D {

void ProgressHub::subscribe(MsgType msgType, MsgBase* pListener) {
    if (pListener != nullptr) vListeners.emplace_back(msgType, pListener);
}

void ProgressHub::unsubscribe(MsgType msgType, MsgBase* pListener) {
    const std::pair<MsgType, MsgBase*> pair(msgType, pListener);
    vListeners.erase(std::remove(vListeners.begin(), vListeners.end(), pair), vListeners.end());
}

ProgressHub::Operation::Operation(ProgressHub& hubOfOwner, const char* operationLabel, std::size_t total)
    : hub(hubOfOwner), bReports(hub.numOpen == 0 && !hub.vListeners.empty()) {
    ++hub.numOpen;
    if (!bReports) return;
    hub.operationLabel = operationLabel;
    hub.total = total;
    hub.current = 0;
    hub.step = std::max<std::size_t>(1, total / 100);
    hub.finished = false;
}

ProgressHub::Operation::~Operation() {
    --hub.numOpen;
    if (!bReports) return;
    hub.finished = true;
    hub.operationLabel = hub.label;
}

void ProgressHub::advance(std::size_t num) {
    if (finished) return;
    const std::size_t stepsBefore = current / step;
    current += std::min(num, total - current);
    if (current == total) {
        finish();
    } else if (current / step != stepsBefore) {
        notify(static_cast<double>(current) / static_cast<double>(total));
    }
}

void ProgressHub::finish() {
    if (finished) return;
    finished = true; // first: a listener that throws has had its 1.0
    notify(1.0);
}

void ProgressHub::notify(double progress) {
    // A listener may unsubscribe itself or others inside its update: go by a copy, but never to one that has
    // left.
    const auto vCopy = vListeners;
    for (const auto& pair : vCopy) {
        if (pair.first != MSG_PROGRESS) continue;
        if (std::find(vListeners.begin(), vListeners.end(), pair) == vListeners.end()) continue;
        pair.second->update(MSG_PROGRESS, operationLabel, progress);
    }
}

} // namespace TESK_KIVO2D
