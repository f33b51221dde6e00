// DomNodeList owns the declarations a save adds, and removes them again.
#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>

#include "dom/save/dom_node_list.h"
#include "frame/library_state.h"
#include "start_library.h"

XERCES_CPP_NAMESPACE_USE
using namespace lumxml;

namespace {

// Records the order in which attributes leave their element.
class RemovalOrder : public ::testing::Test {
protected:
    void SetUp() override {
        lumtest::startInternals();
        document = DOMImplementationRegistry::getDOMImplementation(u"Core")->createDocument();
        element = document->createElement(u"r");
        document->appendChild(element);
    }
    void TearDown() override { document->release(); }

    DOMAttr* addAttribute(const XMLCh* name) {
        DOMAttr* attr = document->createAttribute(name);
        attr->setValue(u"v");
        element->setAttributeNode(attr);
        return attr;
    }

    DOMDocument* document = nullptr;
    DOMElement* element = nullptr;
};

TEST_F(RemovalOrder, EmptyListDestroysQuietly) {
    DomNodeList* list = new DomNodeList;
    EXPECT_EQ(list->head, nullptr);
    EXPECT_EQ(list->tail, nullptr);
    delete list;
}

TEST_F(RemovalOrder, DestroyingTheListRemovesEveryAttributeFirstAddedFirst) {
    DomNodeList list;
    DOMAttr* first = addAttribute(u"xmlns:a");
    DOMAttr* second = addAttribute(u"xmlns:b");
    list.append(new DomNodeListItem(first));
    list.append(new DomNodeListItem(second));
    EXPECT_EQ(list.head->attr, first);
    EXPECT_EQ(list.tail->attr, second);
    EXPECT_EQ(list.head->next, list.tail);
    EXPECT_EQ(element->getAttributes()->getLength(), 2u);
    {
        // Destroy only the head item to see that it is the first one removed.
        DomNodeListItem* head = list.head;
        list.head = head->next;
        head->next = nullptr;
        delete head;
        EXPECT_EQ(element->getAttributeNode(u"xmlns:a"), nullptr);
        EXPECT_NE(element->getAttributeNode(u"xmlns:b"), nullptr);
    }
}

TEST_F(RemovalOrder, ListDestructionLeavesNoAttributeBehind) {
    {
        DomNodeList list;
        list.append(new DomNodeListItem(addAttribute(u"xmlns:a")));
        list.append(new DomNodeListItem(addAttribute(u"xmlns:b")));
        list.append(new DomNodeListItem(addAttribute(u"xmlns")));
    }
    EXPECT_EQ(element->getAttributes()->getLength(), 0u);
}

}  // namespace
