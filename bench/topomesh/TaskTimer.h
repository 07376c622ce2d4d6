#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <optional>
#include <string>

#include "bench/support/SideTimer.h"

namespace topoBench {

enum class Library { Formwork, CGAL, OpenMesh };

/// What one library's mesh looks like after a task: its counts and its vertex valences.
struct MeshFigures {
    long vertices = 0;
    long edges = 0; ///< Undirected.
    long faces = 0;
    std::map<int, long> valences; ///< Valence → number of vertices.
};

/// The expected figures of a closed torus mesh of `vertices` vertices, `edges` edges and
/// `faces` faces whose vertices have the given valences.
MeshFigures torusFigures(long vertices, long edges, long faces, std::map<int, long> valences);

/// An empty string when `got` equals `want` and the Euler characteristic is 0, else what
/// differs.
std::string compareFigures(const MeshFigures& got, const MeshFigures& want);

/// Per-iteration seconds recorded by each (task, library) benchmark so far in this run.
void recordSeconds(const std::string& task, Library library, double seconds);

/// Sets the counters "vs_CGAL" and "vs_OpenMesh" on a Formwork benchmark: its seconds per
/// iteration over the median of the peer's recorded repetitions of the same task.
void reportRatios(benchmark::State& state, const std::string& task, double seconds);

using formworkBench::threadSeconds;

/// One task of one library, registered with `UseManualTime()`. Each iteration runs
/// `prepare()` untimed (building the input of an edit), times `work()`, then runs `finish()`
/// untimed, which checks the result, frees it and returns an error text or an empty string.
/// The time per iteration is recorded under (task, library); a Formwork benchmark reports
/// its ratios to the peers' times recorded earlier in the same run.
template <class Prepare, class Work, class Finish>
void runTask(benchmark::State& state, const std::string& task, Library library, Prepare&& prepare,
             Work&& work, Finish&& finish) {
    const std::optional<double> seconds = formworkBench::runTimed(state, prepare, work, finish);
    if (!seconds) {
        return;
    }
    recordSeconds(task, library, *seconds);
    if (library == Library::Formwork) {
        reportRatios(state, task, *seconds);
    }
}

/// The resident set size of this process in bytes, from /proc/self/statm, after giving the
/// heap's free pages back to the system so that the next allocations show in it.
long residentBytes();

} // namespace topoBench
