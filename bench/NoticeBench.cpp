// The cost of telling listeners about a change: one notice broadcast on an entity's
// modified signal, by number of listeners.

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "geom/entity/Entity.h"
#include "geom/entity/TransformModification.h"

namespace {

class Sender : public koGeom::Entity {
public:
    using Entity::resendMessage;
    using Entity::sendMessage;
};

struct Listener : koRTB::SignalClient {
    void onModified(koGeom::EntityModification& mod) {
        benchmark::DoNotOptimize(&mod);
        ++heard;
    }
    long heard = 0;
};

void broadcastToListeners(benchmark::State& state, bool forwarded) {
    Sender sender;
    std::vector<std::unique_ptr<Listener>> listeners;
    for (int i = 0; i < state.range(0); ++i) {
        listeners.push_back(std::make_unique<Listener>());
        sender.modifiedSignal.connect(*listeners.back(), &Listener::onModified);
    }
    koGeom::TransformModification mod(&sender);
    for (auto _ : state) {
        if (forwarded) {
            sender.resendMessage(mod);
        } else {
            sender.sendMessage(mod);
        }
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["listeners"] = static_cast<double>(state.range(0));
}

void sendMessage(benchmark::State& state) { broadcastToListeners(state, false); }
void resendMessage(benchmark::State& state) { broadcastToListeners(state, true); }

BENCHMARK(sendMessage)->Arg(0)->Arg(1)->Arg(10)->Arg(100);
BENCHMARK(resendMessage)->Arg(10);

} // namespace
