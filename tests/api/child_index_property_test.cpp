// Child counts, children by index (node and document method 8) and positions
// (method 6) checked against the DOM's own child list after every kind of
// change a host can make: inserts at the front, middle and end of parents of
// every size, moves, removals, releases, replacements, normalize, clones
// (shallow, deep, of an attribute's text, of document-level nodes), imports,
// attribute changes, and documents deleted and reloaded. Children are read
// forwards, backwards and at random, and the position of every child is
// checked. The expected answers come from getChildNodes()->item(i), which
// walks forwards from the first child on every call and is always right.
#include <cstdio>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <xercesc/dom/DOMAttr.hpp>

#include "dom_peek.h"
#include "host_documents.h"
#include "host_methods.h"
#include "host_save.h"
#include "host_test.h"
#include "lumxml.h"

using namespace lumtest;
XERCES_CPP_NAMESPACE_USE

namespace {

// ---- the minimal case ----------------------------------------------------------

void* textNode(void* document, const char* value) {
    void* text = createNode(document, "", LUM_NODE_TEXT);
    nodeCall(text, LUM_NODE_SET_VALUE, {const_cast<char*>(value)}, nullptr);
    return text;
}

int32_t positionOf(void* node) {
    int32_t position = -5;
    nodeCall(node, LUM_NODE_INDEX_IN_PARENT, {}, &position);
    return position;
}

TEST(ChildIndexes, ShallowCloneOfAFirstChildAppendedIsReadAtItsIndexAndPosition) {
    LibraryStarted started;
    HostDocument document;
    void* r = createNode(document.cell, "r", LUM_NODE_ELEMENT);
    docCall(document.cell, LUM_DOC_INSERT_BEFORE, {r, nullptr}, nullptr);
    appendChild(r, textNode(document.cell, "a"));
    void* x = createNode(document.cell, "x", LUM_NODE_ELEMENT);
    void* y = createNode(document.cell, "y", LUM_NODE_ELEMENT);
    appendChild(r, x);
    appendChild(r, y);
    int32_t shallow = 0;
    void* clone = nullptr;
    nodeCall(childOf(r, 0), LUM_NODE_CLONE, {&shallow}, &clone);
    appendChild(r, clone);

    EXPECT_EQ(childCountOf(r), 4);
    EXPECT_EQ(saveToMemory(document.cell), "<?xml version=\"1.0\" ?>\n<r>a<x/><y/>a</r>");
    EXPECT_EQ(childOf(r, 3), clone);
    void* atTwo = nullptr;
    int32_t two = 2;
    Answer answer = nodeCall(r, LUM_NODE_CHILD_AT, {&two}, &atTwo);
    EXPECT_EQ(answer.code, LUM_OK) << answer.message;
    EXPECT_EQ(atTwo, y);
    EXPECT_EQ(positionOf(clone), 3);
    EXPECT_EQ(positionOf(y), 2);
    for (int32_t i = 3; i >= 0; --i) EXPECT_EQ(childOf(r, i), static_cast<void*>(static_cast<DOMNode*>(r)->getChildNodes()->item(i)));
}

TEST(ChildIndexes, CloneOfAnAttributesTextAmongManyChildrenKeepsPositions) {
    LibraryStarted started;
    HostDocument document;
    ASSERT_EQ(document.loadMemory("<r a='v'><k/><k/><k/><k/><k/><k/><k/><k/><k/><k/><k/><k/></r>").code,
              LUM_OK);
    void* r = documentElementOf(document.cell);
    void* attribute = nullptr;
    nodeCall(r, LUM_NODE_ATTRIBUTE_NODE, {const_cast<char*>("a")}, &attribute);
    ASSERT_NE(attribute, nullptr);
    int32_t deep = 1;
    void* clone = nullptr;
    nodeCall(childOf(attribute, 0), LUM_NODE_CLONE, {&deep}, &clone);
    void* middle = childOf(r, 6);
    nodeCall(r, LUM_NODE_INSERT_BEFORE, {clone, middle}, nullptr);
    EXPECT_EQ(childCountOf(r), 13);
    for (int32_t i = 12; i >= 0; --i) {
        void* child = childOf(r, i);
        EXPECT_EQ(child, static_cast<void*>(static_cast<DOMNode*>(r)->getChildNodes()->item(i)));
        EXPECT_EQ(positionOf(child), i);
    }
}

TEST(ChildIndexes, ClonedProcessingInstructionAmongTheDocumentsChildren) {
    LibraryStarted started;
    HostDocument document;
    ASSERT_EQ(document.loadMemory("<?p one?><r/><!--c-->").code, LUM_OK);
    void* pi = nullptr;
    int32_t zero = 0;
    docCall(document.cell, LUM_DOC_CHILD_AT, {&zero}, &pi);
    int32_t shallow = 0;
    void* clone = nullptr;
    nodeCall(pi, LUM_NODE_CLONE, {&shallow}, &clone);
    docCall(document.cell, LUM_DOC_INSERT_BEFORE, {clone, nullptr}, nullptr);
    void* documentNode = static_cast<DOMNode*>(static_cast<DOMDocument*>(document.cell));
    EXPECT_EQ(childCountOf(documentNode), 4);
    EXPECT_EQ(positionOf(clone), 3);
    void* last = nullptr;
    int32_t three = 3;
    docCall(document.cell, LUM_DOC_CHILD_AT, {&three}, &last);
    EXPECT_EQ(last, clone);
    int32_t two = 2;
    void* comment = nullptr;
    EXPECT_EQ(docCall(document.cell, LUM_DOC_CHILD_AT, {&two}, &comment).code, LUM_OK);
    EXPECT_EQ(typeOf(comment), LUM_NODE_COMMENT);
}

// ---- the property test ---------------------------------------------------------

// Reads and changes one document through the exports, as a host would, and
// checks every answer against the DOM.
class RandomHost {
public:
    RandomHost(uint32_t seed, std::string* failures) : random_(seed), failures_(failures) {
        load(main_, 0);
        load(donor_, 1);
    }

    void run(int rounds) {
        for (int round = 0; round < rounds && failures_->empty(); ++round) {
            round_ = round;
            change();
            int reads = 1 + static_cast<int>(pick(3));
            for (int i = 0; i < reads; ++i) readParent(randomParent(main_.cell));
            if (pick(4) == 0) readParent(randomParent(donor_.cell));
        }
    }

private:
    // Parents of every size, texts and attributes to clone, a document type
    // and document-level nodes.
    static std::string shape(int variant) {
        std::string xml = "<!DOCTYPE r [<!ENTITY e 'ent'>]><?top pi?><!--top--><r a='x&amp;y' b='2'>";
        for (int size : {0, 1, 2, 7, 8, 9, 10, 16, 17, 33, 120}) {
            xml += "<p n='" + std::to_string(size) + "'>";
            for (int i = 0; i < size; ++i) {
                switch ((i + variant) % 5) {
                case 0: xml += "<c i='" + std::to_string(i) + "'>t</c>"; break;
                case 1: xml += "text" + std::to_string(i); break;
                case 2: xml += "<!--c-->"; break;
                case 3: xml += "<?q d?>"; break;
                default: xml += "<e><f/>&e;</e>"; break;
                }
            }
            xml += "</p>";
        }
        return xml + "</r><!--end-->";
    }

    void load(HostDocument& document, int variant) {
        LoadAnswer answer = document.loadMemory(shape(variant));
        if (answer.code != LUM_OK) fail("load: " + answer.message);
    }

    uint32_t pick(uint32_t bound) { return bound == 0 ? 0 : random_() % bound; }

    void fail(const std::string& what) {
        if (failures_->empty())
            *failures_ = "round " + std::to_string(round_) + ": " + what;
    }

    static DOMNode* domOf(void* cell) {
        return static_cast<DOMNode*>(static_cast<DOMDocument*>(cell));
    }

    // Every node of the document that can hold children, found through the
    // DOM's forward links.
    static std::vector<DOMNode*> parentsOf(void* cell) {
        std::vector<DOMNode*> parents;
        std::vector<DOMNode*> pending{domOf(cell)};
        while (!pending.empty()) {
            DOMNode* node = pending.back();
            pending.pop_back();
            DOMNode::NodeType type = node->getNodeType();
            if (type == DOMNode::ELEMENT_NODE || type == DOMNode::DOCUMENT_NODE)
                parents.push_back(node);
            if (type == DOMNode::ENTITY_REFERENCE_NODE || type == DOMNode::DOCUMENT_TYPE_NODE)
                continue;  // read-only
            for (DOMNode* child = node->getFirstChild(); child != nullptr;
                 child = child->getNextSibling())
                pending.push_back(child);
        }
        return parents;
    }

    DOMNode* randomParent(void* cell) {
        std::vector<DOMNode*> parents = parentsOf(cell);
        // Large parents are read more often: they are the ones with lists.
        if (pick(2) == 0) {
            DOMNode* largest = parents[0];
            for (DOMNode* p : parents)
                if (p->getChildNodes()->getLength() > largest->getChildNodes()->getLength())
                    largest = p;
            if (pick(2) == 0) return largest;
        }
        return parents[pick(static_cast<uint32_t>(parents.size()))];
    }

    DOMNode* randomChild(DOMNode* parent) {
        XMLSize_t length = parent->getChildNodes()->getLength();
        return length == 0 ? nullptr : parent->getChildNodes()->item(pick(static_cast<uint32_t>(length)));
    }

    // Front, middle or end of a parent.
    DOMNode* referenceIn(DOMNode* parent) {
        XMLSize_t length = parent->getChildNodes()->getLength();
        switch (pick(4)) {
        case 0: return parent->getFirstChild();
        case 1: return length > 1 ? parent->getChildNodes()->item(length / 2) : nullptr;
        case 2: return length > 0 ? parent->getChildNodes()->item(length - 1) : nullptr;
        default: return nullptr;  // append
        }
    }

    DOMNode* randomElementParent(void* cell) {
        for (int tries = 0; tries < 8; ++tries) {
            DOMNode* parent = randomParent(cell);
            if (parent->getNodeType() == DOMNode::ELEMENT_NODE) return parent;
        }
        return domOf(cell)->getFirstChild() != nullptr
                   ? static_cast<DOMNode*>(static_cast<DOMDocument*>(main_.cell)->getDocumentElement())
                   : nullptr;
    }

    static bool isAncestorOrSelf(const DOMNode* node, const DOMNode* of) {
        for (const DOMNode* up = of; up != nullptr; up = up->getParentNode())
            if (up == node) return true;
        return false;
    }

    // Something to insert: a new node, a clone or an import.
    DOMNode* newcomer() {
        DOMDocument* document = static_cast<DOMDocument*>(main_.cell);
        switch (pick(8)) {
        case 0: return static_cast<DOMNode*>(createNode(main_.cell, "n", LUM_NODE_ELEMENT));
        case 1: return static_cast<DOMNode*>(textNode(main_.cell, "w"));
        case 2: {  // a clone of an attribute's text
            DOMElement* root = document->getDocumentElement();
            DOMNode* attribute = root->getAttributeNode(u"a");
            if (attribute == nullptr || attribute->getFirstChild() == nullptr) return nullptr;
            return cloneOf(attribute->getFirstChild(), pick(2));
        }
        case 3: {  // a clone of a document-level node
            DOMNode* first = domOf(main_.cell)->getFirstChild();
            for (DOMNode* n = first; n != nullptr; n = n->getNextSibling())
                if (n->getNodeType() == DOMNode::PROCESSING_INSTRUCTION_NODE ||
                    n->getNodeType() == DOMNode::COMMENT_NODE)
                    return cloneOf(n, 0);
            return nullptr;
        }
        case 4: {  // an import from the other document
            DOMNode* source = randomChild(randomParent(donor_.cell));
            if (source == nullptr || source->getNodeType() == DOMNode::DOCUMENT_TYPE_NODE)
                return nullptr;
            int32_t deep = static_cast<int32_t>(pick(2));
            void* copy = nullptr;
            docCall(main_.cell, LUM_DOC_IMPORT_NODE, {source, &deep}, &copy);
            return static_cast<DOMNode*>(copy);
        }
        default: {  // a clone, shallow or deep, of a child (often a first child)
            DOMNode* parent = randomParent(main_.cell);
            DOMNode* source = pick(2) ? parent->getFirstChild() : randomChild(parent);
            if (source == nullptr || source->getNodeType() == DOMNode::DOCUMENT_TYPE_NODE ||
                parent->getNodeType() == DOMNode::DOCUMENT_NODE)
                return nullptr;
            return cloneOf(source, pick(2));
        }
        }
    }

    DOMNode* cloneOf(DOMNode* source, uint32_t deep) {
        int32_t flag = static_cast<int32_t>(deep);
        void* copy = nullptr;
        nodeCall(source, LUM_NODE_CLONE, {&flag}, &copy);
        return static_cast<DOMNode*>(copy);
    }

    void change() {
        switch (pick(12)) {
        case 0:
        case 1:
        case 2: {  // insert something new at the front, middle or end
            DOMNode* parent = randomElementParent(main_.cell);
            DOMNode* node = newcomer();
            if (parent == nullptr || node == nullptr) return;
            nodeCall(parent, LUM_NODE_INSERT_BEFORE, {node, referenceIn(parent)}, nullptr);
            return;
        }
        case 3: {  // move a child elsewhere (its old list changes too)
            DOMNode* from = randomElementParent(main_.cell);
            DOMNode* to = randomElementParent(main_.cell);
            DOMNode* moving = from != nullptr ? randomChild(from) : nullptr;
            if (moving == nullptr || to == nullptr || isAncestorOrSelf(moving, to)) return;
            nodeCall(to, LUM_NODE_INSERT_BEFORE, {moving, referenceIn(to)}, nullptr);
            return;
        }
        case 4: {  // remove, keep aside, put back later
            DOMNode* parent = randomElementParent(main_.cell);
            DOMNode* child = parent != nullptr ? randomChild(parent) : nullptr;
            if (child == nullptr) return;
            nodeCall(parent, LUM_NODE_REMOVE_CHILD, {child}, nullptr);
            aside_.push_back(child);
            return;
        }
        case 5: {  // put back a removed node, or release it
            if (aside_.empty()) return;
            DOMNode* node = aside_.back();
            aside_.pop_back();
            DOMNode* parent = randomElementParent(main_.cell);
            if (parent != nullptr && pick(3) != 0)
                nodeCall(parent, LUM_NODE_INSERT_BEFORE, {node, referenceIn(parent)}, nullptr);
            return;
        }
        case 6: {  // remove and release
            DOMNode* parent = randomElementParent(main_.cell);
            DOMNode* child = parent != nullptr ? randomChild(parent) : nullptr;
            if (child != nullptr) nodeCall(child, LUM_NODE_REMOVE, {}, nullptr);
            return;
        }
        case 7: {  // replace a child
            DOMNode* parent = randomElementParent(main_.cell);
            DOMNode* old = parent != nullptr ? randomChild(parent) : nullptr;
            DOMNode* node = newcomer();
            if (old == nullptr || node == nullptr) return;
            nodeCall(parent, LUM_NODE_REPLACE_CHILD, {node, old}, nullptr);
            aside_.push_back(old);
            return;
        }
        case 8: {  // texts side by side, then normalize
            DOMNode* parent = randomElementParent(main_.cell);
            if (parent == nullptr) return;
            nodeCall(parent, LUM_NODE_INSERT_BEFORE, {textNode(main_.cell, "u"), nullptr}, nullptr);
            nodeCall(parent, LUM_NODE_INSERT_BEFORE, {textNode(main_.cell, "v"), nullptr}, nullptr);
            DOMNode* top = static_cast<DOMDocument*>(main_.cell)->getDocumentElement();
            nodeCall(pick(2) ? parent : top, LUM_NODE_NORMALIZE, {}, nullptr);
            return;
        }
        case 9: {  // attributes and their texts change
            DOMNode* parent = randomElementParent(main_.cell);
            if (parent == nullptr) return;
            nodeCall(parent, LUM_NODE_SET_ATTRIBUTE, {const_cast<char*>("a"),
                                                      const_cast<char*>("z")}, nullptr);
            if (pick(2)) nodeCall(parent, LUM_NODE_REMOVE_ATTRIBUTE, {const_cast<char*>("b")},
                                  nullptr);
            return;
        }
        case 10:  // the other document is deleted and loaded again
            donor_.loadMemory(shape(static_cast<int>(pick(5))));
            return;
        default:  // nothing changes: reads only
            return;
        }
    }

    void expectRead(DOMNode* parent, int32_t index) {
        void* child = reinterpret_cast<void*>(1);
        int32_t at = index;
        ErrorSlot error;
        lumNodeExecute(parent, LUM_NODE_CHILD_AT, std::vector<void*>{&at}.data(), &child,
                       error.buffer, &error.code);
        DOMNode* expected = index < 0 ? nullptr : parent->getChildNodes()->item(static_cast<XMLSize_t>(index));
        const int32_t expectedCode = expected == nullptr ? LUM_ERR_CHILD_INDEX : LUM_OK;
        if (child != static_cast<void*>(expected) || error.code != expectedCode) {
            char text[160];
            std::snprintf(text, sizeof text, "child %d of a parent with %d children: %p, expected %p (code %d)",
                          index, static_cast<int>(parent->getChildNodes()->getLength()), child,
                          static_cast<void*>(expected), error.code);
            fail(text);
        }
    }

    void readParent(DOMNode* parent) {
        int32_t length = static_cast<int32_t>(parent->getChildNodes()->getLength());
        int32_t count = -1;
        nodeCall(parent, LUM_NODE_CHILD_COUNT, {}, &count);
        if (count != length)
            fail("count " + std::to_string(count) + ", expected " + std::to_string(length));
        switch (pick(4)) {
        case 0:
            for (int32_t i = 0; i <= length; ++i) expectRead(parent, i);
            break;
        case 1:
            for (int32_t i = length; i >= -1; --i) expectRead(parent, i);
            break;
        case 2:
            for (int32_t i = 0; i < 12; ++i)
                expectRead(parent, static_cast<int32_t>(pick(static_cast<uint32_t>(length) + 2)));
            break;
        default:
            break;
        }
        // The position of every child, in one of three orders.
        uint32_t order = pick(3);
        for (int32_t k = 0; k < length; ++k) {
            int32_t i = order == 0 ? k : order == 1 ? length - 1 - k
                                                    : static_cast<int32_t>(pick(static_cast<uint32_t>(length)));
            DOMNode* child = parent->getChildNodes()->item(static_cast<XMLSize_t>(i));
            int32_t position = positionOf(child);
            if (position != i)
                fail("position " + std::to_string(position) + ", expected " + std::to_string(i));
        }
    }

    std::mt19937 random_;
    std::string* failures_;
    int round_ = 0;
    HostDocument main_;
    HostDocument donor_;
    std::vector<DOMNode*> aside_;
};

TEST(ChildIndexes, RandomChangesAndReadsInEveryOrderMatchTheChildList) {
    LibraryStarted started;
    for (uint32_t seed : {1u, 2u, 20261123u}) {
        std::string failures;
        RandomHost(seed, &failures).run(400);
        EXPECT_EQ(failures, "") << "seed " << seed;
    }
}

TEST(ChildIndexes, TwoThreadsWithTwoDocumentsEachReadTheirOwnRight) {
    LibraryStarted started;
    std::string failures[2];
    std::thread first([&] { RandomHost(11, &failures[0]).run(300); });
    std::thread second([&] { RandomHost(12, &failures[1]).run(300); });
    first.join();
    second.join();
    EXPECT_EQ(failures[0], "");
    EXPECT_EQ(failures[1], "");
}

}  // namespace
