#include "displays/DetectionPass.h"

#include <utility>

namespace rb {

DetectionPass::DetectionPass(HelperRunner& runner, std::vector<DisplayRow> rows, std::vector<DisplayRow> oldRows,
                             Finished finished)
    : runner_(runner)
    , rows_(std::move(rows))
    , oldRows_(std::move(oldRows))
    , finished_(std::move(finished))
    , hasHelper_(runner.helperPath().has_value()) {}

void DetectionPass::start() {
    runner_.readConnections(lifetime_.guard([this](ConnectionSnapshot snapshot) {
        snapshot_ = std::move(snapshot);
        runner_.run({"list"}, lifetime_.guard([this](const HelperAnswer& list) {
            list_ = list;
            probe(0);
        }));
    }));
}

void DetectionPass::probe(std::size_t index) {
    for (; index < rows_.size(); ++index) {
        DisplayRow& row = rows_[index];
        const std::string channel = channelOf(row, list_);
        if (auto status = statusWithoutProbe(row, hasHelper_, channel)) {
            row.status = std::move(status);
            continue;
        }
        runner_.run({"probe", channel}, lifetime_.guard([this, index, channel](const HelperAnswer& answer) {
            applyProbe(rows_[index], channel, answer, snapshot_, oldRows_);
            probe(index + 1);
        }));
        return;
    }
    finish();
}

void DetectionPass::finish() {
    carryOverUnreachable(rows_, oldRows_);
    // The receiver may drop this pass.
    const Finished finished = std::move(finished_);
    finished(std::move(snapshot_), std::move(rows_));
}

} // namespace rb
