// The half-edge mesh TopoMesh beside CGAL's Surface_mesh and OpenMesh's array-kernel mesh, on
// a closed torus grid of 1,000,000 triangles (500,000 vertices of valence 6) that one
// generator gives all three libraries.
//
// Each task is one benchmark per library: BM_<task>/CGAL, BM_<task>/OpenMesh and
// BM_<task>/Formwork, registered in that order. Every benchmark times only the task itself
// (manual time, by the thread's CPU clock; building the input of an edit, checking the result and
// freeing the mesh are outside the timed region) and records its time per iteration under its task.
// The Formwork benchmark, which runs last, reports the counters vs_CGAL and vs_OpenMesh: its time
// over the median of the peer's repetitions recorded earlier in the same run (so filter on the
// task, not on the library, to get ratios). Every result is checked: counts, Euler
// characteristic 0 and valences, the smoothed points against a reference computed on the
// grid, and for TopoMesh every half-edge link.
//
// BM_Memory/* build the mesh once per iteration and report the resident bytes added per
// vertex (run first, while the heap is clean). BM_SetState/Formwork has no peer: it reports
// vs_memcpy, its time over memcpy of the records it swaps.

#include <benchmark/benchmark.h>

#include <string>

#include "bench/topomesh/LibrarySides.h"

namespace {

using Function = void (*)(benchmark::State&);

struct Task {
    std::string name;
    Function cgal;
    Function openMesh;
    Function formwork;
    int iterations; ///< Per repetition; 0 lets the library choose.
};

void registerTask(const Task& task) {
    const std::pair<const char*, Function> sides[] = {
        {"/CGAL", task.cgal}, {"/OpenMesh", task.openMesh}, {"/Formwork", task.formwork}};
    for (const auto& [library, function] : sides) {
        auto* benchmark =
            benchmark::RegisterBenchmark(("BM_" + task.name + library).c_str(), function);
        benchmark->Unit(benchmark::kMillisecond);
        if (task.name != "Memory") {
            benchmark->UseManualTime();
        }
        if (task.iterations > 0) {
            benchmark->Iterations(task.iterations);
        }
    }
}

const bool registered = [] {
    using namespace topoBench;
    registerTask({"Memory", cgalSide::memory, openMeshSide::memory, formworkSide::memory, 1});
    registerTask({buildTask, cgalSide::build, openMeshSide::build, formworkSide::build, 2});
    registerTask(
        {circulateTask, cgalSide::circulate, openMeshSide::circulate, formworkSide::circulate, 0});
    registerTask({smoothTask, cgalSide::smooth, openMeshSide::smooth, formworkSide::smooth, 2});
    registerTask({sqrt3Task, cgalSide::sqrt3, openMeshSide::sqrt3, formworkSide::sqrt3, 2});
    registerTask({splitRemoveTask, cgalSide::splitRemove, openMeshSide::splitRemove,
                  formworkSide::splitRemove, 2});
    registerTask({splitEdgesTask, cgalSide::splitEdges, openMeshSide::splitEdges,
                  formworkSide::splitEdges, 2});
    registerTask({copyTask, cgalSide::copy, openMeshSide::copy, formworkSide::copy, 2});
    benchmark::RegisterBenchmark("BM_SetState/Formwork", formworkSide::setState)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
