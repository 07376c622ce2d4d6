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

TEST(IoPacketRegistry, ForwardReferencesResolveAndHooksRunInOrder) {
    // A chain 0 -> 1 -> 2 written head first: every next pointer is a forward reference.
    Node chain[3];
    for (int i = 0; i < 3; ++i) {
        chain[i].value = 10 + i;
        chain[i].next = i < 2 ? &chain[i + 1] : nullptr;
    }
    chain[2].partner = &chain[0];
    Node stray{99, nullptr, nullptr};
    ioWriteContext out;
    for (const Node& node : chain) {
        writeNode(out, node);
    }
    out.startPacket("test.unknown");
    out.writeInt(5);
    out.endPacket();
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
    EXPECT_EQ(in.skippedPacketCount(), 1u);
    const std::vector<std::string> expected = {
        "pre test.node", "post ok",       "pre test.node", "post ok",           "pre test.node",
        "post ok",       "pre test.node", "post ok",       "unreferenced 4 99", "finished"};
    EXPECT_EQ(log, expected);
}

TEST(IoPacketRegistry, RejectedPacketDropsItsFixupsAndUndoesItsDefinition) {
    // Node 0 points forward to node 1, which its reader rejects: the pointer stays unresolved.
    Node second{-1, nullptr, nullptr};
    Node first{1, &second, nullptr};
    Node third{3, &second, &first};
    ioWriteContext out;
    writeNode(out, first);
    writeNode(out, second);
    writeNode(out, third);
    ASSERT_TRUE(out.close());

    std::vector<std::unique_ptr<Node>> nodes;
    std::vector<std::string> log;
    ioPacketRegistry registry;
    registry.supportedType(new NodeType(nodes, log));
    ioReadContext in(out.buffer().data(), out.buffer().size());
    ASSERT_TRUE(in.readAll(registry)) << in.error().toString();
    ASSERT_EQ(nodes.size(), 2u);
    EXPECT_EQ(nodes[0]->next, nullptr);
    EXPECT_EQ(nodes[1]->partner, nodes[0].get());
    ASSERT_EQ(in.invalidPacketCount(), 1u);
    EXPECT_EQ(in.invalidPackets()[0].packetIndex, 1);
    EXPECT_EQ(in.invalidPackets()[0].message, "not accepted by its reader");
    const std::vector<std::string> expected = {"unreferenced 3 3", "unresolved 2", "unresolved 2",
                                               "finished"};
    EXPECT_EQ(log, expected);
}

} // namespace
