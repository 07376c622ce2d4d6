#include "crate/ioPacketRegistry.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "crate/ioClientReadContext.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"

namespace {

/// A node of a linked structure written one packet per node: value, then next and partner.
struct Node {
    int value = 0;
    Node* next = nullptr;
    Node* partner = nullptr;
};

/// Reads node packets into `nodes`, logging every call the read makes.
class NodeType : public ioPacketType {
public:
    NodeType(std::vector<std::unique_ptr<Node>>& nodes, std::vector<std::string>& log)
        : ioPacketType("test.node"), nodes_(nodes), log_(log) {}

    bool readPacket(ioReadContext& in) override {
        auto node = std::make_unique<Node>();
        node->value = in.readInt();
        in.readPointer(&node->next, 1);
        in.readPointer(&node->partner, 1);
        if (node->value < 0) {
            return false;
        }
        in.defineReference(in.getPacketReference(), node.get(), 1);
        nodes_.push_back(std::move(node));
        return true;
    }
    void memoryNotReferenced(ioReadContext&, int reference, void* object) override {
        log_.push_back("unreferenced " + std::to_string(reference) + " " +
                       std::to_string(static_cast<Node*>(object)->value));
    }
    void hasUnresolvedPointer(ioReadContext&, int reference) override {
        log_.push_back("unresolved " + std::to_string(reference));
    }
    void readFinished(ioReadContext&) override { log_.push_back("finished"); }

private:
    std::vector<std::unique_ptr<Node>>& nodes_;
    std::vector<std::string>& log_;
};

class Client : public ioClientReadContext {
public:
    Client(ioReadContext& in, std::vector<std::string>& log) : ioClientReadContext(in), log_(log) {}
    void prePacketRead(const ioPacketType& type) override {
        log_.push_back("pre " + type.getName());
    }
    void postPacketRead(const ioPacketType&, bool accepted) override {
        log_.push_back(accepted ? "post ok" : "post rejected");
    }

private:
    std::vector<std::string>& log_;
};

void writeNode(ioWriteContext& out, const Node& node) {
    out.startPacket("test.node", &node);
    out.writeInt(node.value);
    out.writePointer(node.next);
    out.writePointer(node.partner);
    out.endPacket();
}

TEST(IoPacketRegistry, ForwardReferencesResolveRejectedPacketsUndoAndHooksRunInOrder) {
    // A chain 0 -> 1 -> 2 written head first: every next pointer is a forward reference. The
    // head's partner, written after an unknown packet, is rejected by its reader: the pointer
    // to it stays unresolved, and so does the one a later (never named) node holds back to it.
    Node rejected{-1, nullptr, nullptr};
    Node chain[3];
    for (int i = 0; i < 3; ++i) {
        chain[i].value = 10 + i;
        chain[i].next = i < 2 ? &chain[i + 1] : nullptr;
    }
    chain[0].partner = &rejected;
    chain[2].partner = &chain[0];
    Node stray{99, &rejected, nullptr};
    ioWriteContext out;
    for (const Node& node : chain) {
        writeNode(out, node);
    }
    out.startPacket("test.unknown");
    out.writeInt(5);
    out.endPacket();
    writeNode(out, rejected);
    writeNode(out, stray);
    ASSERT_TRUE(out.close());

    std::vector<std::unique_ptr<Node>> nodes;
    std::vector<std::string> log;
    ioPacketRegistry registry;
    registry.supportedType(new NodeType(nodes, log));
    ASSERT_NE(registry.findType("test.node"), nullptr);
    ioReadContext in(out.buffer().data(), out.buffer().size());
    Client client(in, log);
    ASSERT_TRUE(client.read(registry)) << in.error().toString();

    ASSERT_EQ(nodes.size(), 4u);
    EXPECT_EQ(nodes[0]->next, nodes[1].get());
    EXPECT_EQ(nodes[1]->next, nodes[2].get());
    EXPECT_EQ(nodes[2]->next, nullptr);
    EXPECT_EQ(nodes[2]->partner, nodes[0].get());
    EXPECT_TRUE(nodes[0]->partner == nullptr && nodes[3]->next == nullptr);
    EXPECT_EQ(in.skippedPacketCount(), 1u);
    ASSERT_EQ(in.invalidPacketCount(), 1u);
    EXPECT_EQ(in.invalidPackets()[0].packetIndex, 4);
    EXPECT_EQ(in.invalidPackets()[0].message, "not accepted by its reader");
    const std::vector<std::string> expected = {
        "pre test.node",     "post ok",       "pre test.node", "post ok",       "pre test.node",
        "post ok",           "pre test.node", "post rejected", "pre test.node", "post ok",
        "unreferenced 5 99", "unresolved 3",  "unresolved 3",  "finished"};
    EXPECT_EQ(log, expected);
}

/// Runs `read` for every packet of the types "a" and "b".
class LambdaType : public ioPacketType {
public:
    LambdaType(std::string name, std::function<bool(ioReadContext&)> read, int* finished)
        : ioPacketType(std::move(name)), read_(std::move(read)), finished_(finished) {}
    bool readPacket(ioReadContext& in) override { return read_(in); }
    void readFinished(ioReadContext&) override { ++*finished_; }
    void memoryNotReferenced(ioReadContext&, int, void*) override { *finished_ += 100; }

private:
    std::function<bool(ioReadContext&)> read_;
    int* finished_;
};

TEST(IoPacketRegistry, ReferenceMisuseIsAnErrorOfThePacket) {
    // Packet 0 ("a", object 1) points at object 2 of packet 1 ("b"); packet 2 ("a") points
    // at 1. Each case reads them with other kinds or definitions.
    static int objects[2];
    ioWriteContext out;
    out.startPacket("a", &objects[0]);
    out.writePointer(&objects[1]);
    out.endPacket();
    out.startPacket("b", &objects[1]);
    out.writeNullPointer();
    out.endPacket();
    out.startPacket("a");
    out.writePointer(&objects[0]);
    out.endPacket();
    ASSERT_TRUE(out.close());

    struct Case {
        const char* name;
        int kindOfA, kindOfB, pointerKind;
        int defineOf; // 0: the packet's own reference
        std::int64_t packetIndex;
        const char* message;
    };
    const Case cases[] = {
        {"ForwardKindMismatch", 1, 2, 1, 0, 1,
         "defines reference 2 as an object of kind 2, which a pointer read as kind 1"},
        {"BackwardKindMismatch", 2, 1, 1, 0, 2,
         "pointer of kind 1 to reference 1, an object of kind 2"},
        {"DefinedTwice", 1, 1, 1, 1, 1, "defines reference 1 twice"},
        {"NeverNamed", 1, 1, 1, 3, 0, "defines reference 3, which the file never named"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        int finished = 0;
        int storage[2];
        void* slots[3] = {};
        int next = 0;
        const auto reader = [&](int kind, int* object) {
            return [&, kind, object](ioReadContext& in) {
                in.readPointer(&slots[next++ % 3], c.pointerKind);
                if (in.getPacketReference() != 0) {
                    in.defineReference(c.defineOf != 0 ? c.defineOf : in.getPacketReference(),
                                       object, kind);
                }
                return true;
            };
        };
        ioPacketRegistry registry;
        registry.supportedType(new LambdaType("a", reader(c.kindOfA, &storage[0]), &finished));
        registry.supportedType(new LambdaType("b", reader(c.kindOfB, &storage[1]), &finished));
        ioReadContext in(out.buffer().data(), out.buffer().size());
        EXPECT_FALSE(in.readAll(registry));
        EXPECT_EQ(in.error().message, c.message);
        EXPECT_EQ(in.error().packetIndex, c.packetIndex);
        // Every type that read a packet finishes, even after the error; no end notices.
        EXPECT_EQ(finished, c.packetIndex == 0 ? 1 : 2);
    }
}

TEST(IoPacketRegistry, ReferencesInSkippedPacketsAndValuesKeepTheNumbering) {
    // The first sight of references 2 and 3 is in a packet of an unknown type and in values
    // its reader leaves unread; references 4 and 5 after them must still read.
    static int objects[5];
    ioWriteContext out;
    out.startPacket("unknown", &objects[0]);
    out.startSubPacket();
    out.writePointer(&objects[1]);
    out.endSubPacket();
    out.endPacket();
    out.startPacket("known");
    out.writeInt(1);
    out.nextChunk();
    out.writePointer(&objects[2]);
    out.endPacket();
    out.startPacket("known", &objects[3]);
    out.writeInt(2);
    out.writePointer(&objects[4]);
    out.writePointer(&objects[0]);
    out.endPacket();
    ASSERT_TRUE(out.close());

    int finished = 0;
    int ids[2] = {};
    void* defined = nullptr;
    ioPacketRegistry registry;
    registry.supportedType(new LambdaType(
        "known",
        [&](ioReadContext& in) {
            if (in.readInt() == 2) {
                ids[0] = in.readReferenceId();
                ids[1] = in.readReferenceId();
                in.defineReference(in.getPacketReference(), &finished);
                defined = in.getReferenceDefinition(4);
            }
            return true;
        },
        &finished));
    ioReadContext in(out.buffer().data(), out.buffer().size());
    ASSERT_TRUE(in.readAll(registry)) << in.error().toString();
    EXPECT_EQ(in.skippedPacketCount(), 1u);
    EXPECT_EQ(ids[0], 5);
    EXPECT_EQ(ids[1], 1);
    EXPECT_EQ(defined, &finished);
    EXPECT_EQ(in.getReferenceKind(4), 0);
    EXPECT_EQ(in.getReferenceKind(5), -1);
    EXPECT_EQ(finished, 101); // readFinished, and object 4 was never named by a pointer
}

TEST(IoPacketRegistry, SameNameReplacesAndFindsInOrder) {
    int finished = 0;
    const auto accept = [](ioReadContext&) { return true; };
    ioPacketRegistry registry;
    registry.supportedType(nullptr);
    registry.supportedType(new LambdaType("x", accept, &finished));
    registry.supportedType(new LambdaType("y", accept, &finished));
    auto* replacement = new LambdaType("x", accept, &finished);
    registry.supportedType(replacement);
    ASSERT_EQ(registry.size(), 2u);
    EXPECT_EQ(registry.typeAt(0), replacement);
    EXPECT_EQ(registry.findType("x"), replacement);
    EXPECT_EQ(registry.typeAt(1)->getName(), "y");
    EXPECT_EQ(registry.findType("z"), nullptr);
    EXPECT_EQ(registry.typeAt(2), nullptr);
}

} // namespace
