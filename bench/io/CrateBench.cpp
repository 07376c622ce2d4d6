// The packet-file library against the plainest way to store the same data.
//
// BM_WriteArrays / BM_ReadArrays: a mesh-sized pair of arrays (1,000,000 vertices of three
// floats, 2,000,000 triangles of three int32) as packets of 1000 elements, to and from a file,
// against one fwrite / fread per array of the same bytes. Goal: within 2x ("vs_raw" <= 2).
//
// BM_WriteTinyPackets / BM_ReadTinyPackets: 1,000,000 records of a linked structure, one
// packet each (an object, a pointer to its owner and six pointers to other records, most of
// them forward), as a half-edge mesh is written; against fwrite / fread of the same links as
// int32 indices (a hand-made dump that knows its layout and checks nothing). Links lead to
// records near their own, three quarters forward, as in a mesh. They show the
// per-packet cost: framing, checksum, numbering at first sight and fix-ups.
//
// Each iteration runs both sides one after the other and times each by the thread's CPU clock
// (user and system: the copies into and out of the page cache), so that other work on the
// machine does not count; "vs_raw" is the packet side's total over the raw side's.

#include <benchmark/benchmark.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "crate/ioPacketRegistry.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"

namespace {

constexpr int numVertices = 1000000;
constexpr int numTriangles = 2000000;
constexpr int elementsPerPacket = 1000;
constexpr int numRecords = 1000000;
constexpr int linksPerRecord = 6;

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// A folder for the run's files, removed at exit.
const std::filesystem::path& folder() {
    static struct Folder {
        std::filesystem::path path =
            std::filesystem::temp_directory_path() / ("crateBench-" + std::to_string(::getpid()));
        Folder() { std::filesystem::create_directories(path); }
        ~Folder() { std::filesystem::remove_all(path); }
    } folder;
    return folder.path;
}

std::string filePath(const char* name) { return (folder() / name).string(); }

struct Mesh {
    std::vector<float> vertices = std::vector<float>(3 * numVertices);
    std::vector<std::int32_t> triangles = std::vector<std::int32_t>(3 * numTriangles);
};

const Mesh& sourceMesh() {
    static const Mesh mesh = [] {
        Mesh m;
        std::mt19937 random(7);
        for (float& v : m.vertices) {
            v = static_cast<float>(random() % 100000) * 0.01f;
        }
        for (std::int32_t& t : m.triangles) {
            t = static_cast<std::int32_t>(random() % numVertices);
        }
        return m;
    }();
    return mesh;
}

void writeRaw(const Mesh& mesh, const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    std::fwrite(mesh.vertices.data(), sizeof(float), mesh.vertices.size(), file);
    std::fwrite(mesh.triangles.data(), sizeof(std::int32_t), mesh.triangles.size(), file);
    std::fclose(file);
}

bool readRaw(Mesh& mesh, const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    const bool ok = std::fread(mesh.vertices.data(), sizeof(float), mesh.vertices.size(), file) ==
                        mesh.vertices.size() &&
                    std::fread(mesh.triangles.data(), sizeof(std::int32_t), mesh.triangles.size(),
                               file) == mesh.triangles.size();
    std::fclose(file);
    return ok;
}

bool writePackets(const Mesh& mesh, const std::string& path) {
    ioWriteContext out(path);
    for (int start = 0; start < numVertices; start += elementsPerPacket) {
        const int count = std::min(elementsPerPacket, numVertices - start);
        out.startPacket("bench.vertices");
        out.writeInt(start);
        out.writeInt(count);
        out.writeFloatArray(mesh.vertices.data() + 3 * start, 3 * static_cast<std::size_t>(count));
        out.endPacket();
    }
    for (int start = 0; start < numTriangles; start += elementsPerPacket) {
        const int count = std::min(elementsPerPacket, numTriangles - start);
        out.startPacket("bench.triangles");
        out.writeInt(start);
        out.writeInt(count);
        out.writeIntArray(mesh.triangles.data() + 3 * start, 3 * static_cast<std::size_t>(count));
        out.endPacket();
    }
    return out.close();
}

/// Reads one array packet into the mesh, as a mesh reader does: start, count, elements.
class ArrayType : public ioPacketType {
public:
    ArrayType(const char* name, Mesh& mesh) : ioPacketType(name), mesh_(mesh) {}
    bool readPacket(ioReadContext& in) override {
        const int start = in.readInt();
        const int count = in.readInt();
        const bool vertices = getName() == "bench.vertices";
        const std::size_t size = vertices ? mesh_.vertices.size() : mesh_.triangles.size();
        if (start < 0 || count < 0 || 3 * (static_cast<std::size_t>(start) + count) > size) {
            return false;
        }
        if (vertices) {
            in.readFloatArray(mesh_.vertices.data() + 3 * start,
                              3 * static_cast<std::size_t>(count));
        } else {
            in.readIntArray(mesh_.triangles.data() + 3 * start,
                            3 * static_cast<std::size_t>(count));
        }
        return true;
    }

private:
    Mesh& mesh_;
};

bool readPackets(Mesh& mesh, const std::string& path) {
    ioPacketRegistry registry;
    registry.supportedType(new ArrayType("bench.vertices", mesh));
    registry.supportedType(new ArrayType("bench.triangles", mesh));
    ioReadContext in(path);
    return in.readAll(registry) && in.invalidPacketCount() == 0;
}

/// Runs `raw` and `packets` once per iteration, times each, and reports the ratio.
template <class Raw, class Packets>
void compare(benchmark::State& state, std::size_t bytes, Raw&& raw, Packets&& packets) {
    double rawTotal = 0.0;
    double packetTotal = 0.0;
    for (auto _ : state) {
        double start = threadSeconds();
        if (!raw()) {
            state.SkipWithError("the raw side failed");
            return;
        }
        rawTotal += threadSeconds() - start;
        start = threadSeconds();
        if (!packets()) {
            state.SkipWithError("the packet side failed");
            return;
        }
        const double elapsed = threadSeconds() - start;
        packetTotal += elapsed;
        state.SetIterationTime(elapsed);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(bytes));
    state.counters["vs_raw"] = packetTotal / rawTotal;
    state.counters["raw_ms"] = 1e3 * rawTotal / static_cast<double>(state.iterations());
}

constexpr std::size_t meshBytes =
    3 * sizeof(float) * numVertices + 3 * sizeof(std::int32_t) * numTriangles;

void BM_WriteArrays(benchmark::State& state) {
    const Mesh& mesh = sourceMesh();
    const std::string raw = filePath("raw.bin");
    const std::string packets = filePath("arrays.fwpk");
    compare(
        state, meshBytes,
        [&] {
            writeRaw(mesh, raw);
            return true;
        },
        [&] { return writePackets(mesh, packets); });
    state.counters["file_MB"] = static_cast<double>(std::filesystem::file_size(packets)) / 1e6;
}
BENCHMARK(BM_WriteArrays)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_ReadArrays(benchmark::State& state) {
    const Mesh& source = sourceMesh();
    const std::string raw = filePath("raw.bin");
    const std::string packets = filePath("arrays.fwpk");
    writeRaw(source, raw);
    writePackets(source, packets);
    Mesh mesh;
    compare(
        state, meshBytes, [&] { return readRaw(mesh, raw); },
        [&] { return readPackets(mesh, packets); });
    if (mesh.vertices != source.vertices || mesh.triangles != source.triangles) {
        state.SkipWithError("the arrays read back differ");
    }
}
BENCHMARK(BM_ReadArrays)->UseManualTime()->Unit(benchmark::kMillisecond);

/// A record of a linked structure, like a half-edge: an owner and six links to other records.
struct Record {
    const void* owner;
    Record* links[linksPerRecord];
};

struct Records {
    std::vector<Record> records = std::vector<Record>(numRecords);
    int owner = 0;
};

/// Each record links to six others near it in the list, as records of a mesh do (a half-edge's
/// next, twin and face were made at about the same time), three quarters of them forward.
const Records& sourceRecords() {
    static const Records source = [] {
        Records r;
        std::mt19937 random(11);
        for (int i = 0; i < numRecords; ++i) {
            r.records[i].owner = &r.owner;
            for (Record*& link : r.records[i].links) {
                const int target = i - 256 + static_cast<int>(random() % 1024);
                link = &r.records[static_cast<std::size_t>(std::clamp(target, 0, numRecords - 1))];
            }
        }
        return r;
    }();
    return source;
}

std::vector<std::int32_t> recordIndices(const Records& r) {
    std::vector<std::int32_t> indices;
    indices.reserve(static_cast<std::size_t>(numRecords) * linksPerRecord);
    for (const Record& record : r.records) {
        for (Record* link : record.links) {
            indices.push_back(static_cast<std::int32_t>(link - r.records.data()));
        }
    }
    return indices;
}

bool writeRecordPackets(const Records& r, const std::string& path) {
    ioWriteContext out(path);
    out.startPacket("bench.owner", &r.owner);
    out.endPacket();
    for (const Record& record : r.records) {
        out.startPacket("bench.record", &record);
        out.writePointer(record.owner);
        for (Record* link : record.links) {
            out.writePointer(link);
        }
        out.endPacket();
    }
    return out.close();
}

class OwnerType : public ioPacketType {
public:
    explicit OwnerType(Records& r) : ioPacketType("bench.owner"), r_(r) {}
    bool readPacket(ioReadContext& in) override {
        in.defineReference(in.getPacketReference(), &r_.owner, 1);
        return true;
    }

private:
    Records& r_;
};

class RecordType : public ioPacketType {
public:
    explicit RecordType(Records& r) : ioPacketType("bench.record"), r_(r) {}
    bool readPacket(ioReadContext& in) override {
        if (next_ == r_.records.size()) {
            return false;
        }
        Record& record = r_.records[next_++];
        in.readPointer(const_cast<void**>(&record.owner), 1);
        for (Record*& link : record.links) {
            in.readPointer(&link, 2);
        }
        in.defineReference(in.getPacketReference(), &record, 2);
        return true;
    }

private:
    Records& r_;
    std::size_t next_ = 0;
};

bool readRecordPackets(Records& r, const std::string& path) {
    ioPacketRegistry registry;
    registry.supportedType(new OwnerType(r));
    registry.supportedType(new RecordType(r));
    ioReadContext in(path);
    return in.readAll(registry) && in.invalidPacketCount() == 0;
}

void BM_WriteTinyPackets(benchmark::State& state) {
    const Records& source = sourceRecords();
    const std::string raw = filePath("records.bin");
    const std::string packets = filePath("records.fwpk");
    compare(
        state, static_cast<std::size_t>(numRecords) * linksPerRecord * sizeof(std::int32_t),
        [&] {
            // The hand-made dump also turns its pointers into numbers before writing them.
            const std::vector<std::int32_t> indices = recordIndices(source);
            std::FILE* file = std::fopen(raw.c_str(), "wb");
            std::fwrite(indices.data(), sizeof(std::int32_t), indices.size(), file);
            return std::fclose(file) == 0;
        },
        [&] { return writeRecordPackets(source, packets); });
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * numRecords);
    state.counters["bytes_per_packet"] =
        static_cast<double>(std::filesystem::file_size(packets)) / numRecords;
}
BENCHMARK(BM_WriteTinyPackets)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_ReadTinyPackets(benchmark::State& state) {
    const Records& source = sourceRecords();
    const std::string raw = filePath("records.bin");
    const std::string packets = filePath("records.fwpk");
    writeRecordPackets(source, packets);
    {
        const std::vector<std::int32_t> indices = recordIndices(source);
        std::FILE* file = std::fopen(raw.c_str(), "wb");
        std::fwrite(indices.data(), sizeof(std::int32_t), indices.size(), file);
        std::fclose(file);
    }
    Records r;
    std::vector<std::int32_t> indices(static_cast<std::size_t>(numRecords) * linksPerRecord);
    compare(
        state, indices.size() * sizeof(std::int32_t),
        [&] {
            std::FILE* file = std::fopen(raw.c_str(), "rb");
            const bool ok = std::fread(indices.data(), sizeof(std::int32_t), indices.size(),
                                       file) == indices.size();
            std::fclose(file);
            for (std::size_t i = 0; i < r.records.size(); ++i) {
                r.records[i].owner = &r.owner;
                for (int k = 0; k < linksPerRecord; ++k) {
                    r.records[i].links[k] = &r.records[static_cast<std::size_t>(
                        indices[i * linksPerRecord + static_cast<std::size_t>(k)])];
                }
            }
            return ok;
        },
        [&] { return readRecordPackets(r, packets); });
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * numRecords);
    // Every link must lead to the record it led to when written.
    const Record* base = r.records.data();
    const Record* sourceBase = source.records.data();
    for (std::size_t i = 0; i < r.records.size(); ++i) {
        for (int k = 0; k < linksPerRecord; ++k) {
            if (r.records[i].links[k] - base != source.records[i].links[k] - sourceBase) {
                state.SkipWithError("a link read back differs");
                return;
            }
        }
    }
}
BENCHMARK(BM_ReadTinyPackets)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
