// The element side of the writer: start tags built lazily from a pending
// list, attributes, namespace declarations and bindings, end tags, and the
// strict checks on them.
#include <cstring>

#include "writer/writer.h"

XERCES_CPP_NAMESPACE_USE

namespace lumxml {

namespace {

using Text = MaybeText;

Text copyOf(const char* text) { return Text(text); }
Text copyOf(const Text& text) { return text; }

// Both absent counts as the same.
bool same(const Text& a, const Text& b) {
    if (!a || !b) return !a && !b;
    return *a == *b;
}
bool same(const Text& a, const std::string& b) { return a && *a == b; }

// The text "xmlns" (asked of every attribute name and prefix: the length
// decides most cases without a comparison).
bool isXmlns(const std::string& text) { return text.size() == 5 && text.compare("xmlns") == 0; }
bool isXmlns(const Text& text) { return text && isXmlns(*text); }

// A name split at its first colon; no colon: no prefix.
struct SplitName {
    Text prefix;
    std::string local;
};

// Into the given holders, reusing their room.
void splitInto(const char* qName, Text& prefix, std::string& local) {
    const char* colon = qName != nullptr ? std::strchr(qName, ':') : nullptr;
    if (colon == nullptr) {
        prefix.reset();
        if (qName != nullptr) local.assign(qName); else local.clear();
    } else {
        prefix.assign(qName, colon);
        local.assign(colon + 1);
    }
}

SplitName split(const char* qName) {
    SplitName name;
    splitInto(qName, name.prefix, name.local);
    return name;
}

std::string qualified(const Text& prefix, const std::string& local) {
    return prefix ? *prefix + ":" + local : local;
}

// ---- Bindings ------------------------------------------------------------

NamespaceBinding* pushBinding(SAXWriter& w, Text prefix, Text uri) {
    NamespaceBinding* binding = new NamespaceBinding;
    binding->prefix = std::move(prefix);
    binding->uri = std::move(uri);
    binding->depth = w.depth;
    binding->next = w.bindings;
    w.bindings = binding;
    return binding;
}

NamespaceBinding* pushPendingBinding(SAXWriter& w, const Text& prefix, const Text& uri) {
    w.pendingBinding = pushBinding(w, copyOf(prefix), copyOf(uri));
    return w.pendingBinding;
}

void moveToHead(SAXWriter& w, NamespaceBinding* binding) {
    if (w.bindings == binding) return;
    for (NamespaceBinding* b = w.bindings; b != nullptr; b = b->next) {
        if (b->next == binding) {
            b->next = binding->next;
            binding->next = w.bindings;
            w.bindings = binding;
            return;
        }
    }
}

NamespaceBinding* newestWithPrefix(SAXWriter& w, const std::string& prefix) {
    for (NamespaceBinding* b = w.bindings; b != nullptr; b = b->next)
        if (same(b->prefix, prefix)) return b;
    return nullptr;
}

// A prefixed binding that a newer binding of the same prefix hides. Its
// prefix no longer stands for its URI, so writing a name with it would put
// the name in the newer binding's namespace: a search by URI passes over it.
bool isShadowed(SAXWriter& w, const NamespaceBinding* binding) {
    if (!binding->prefix) return false;
    return newestWithPrefix(w, *binding->prefix) != binding;
}

// The newest binding of `uri` whose prefix still means it.
NamespaceBinding* newestInScopeWithUri(SAXWriter& w, const Text& uri) {
    for (NamespaceBinding* b = w.bindings; b != nullptr; b = b->next)
        if (same(b->uri, uri) && !isShadowed(w, b)) return b;
    return nullptr;
}

// The lookup used when tags are written and when elements end.
NamespaceBinding* lookup(SAXWriter& w, const Text& prefix, const Text& uri) {
    if (prefix) {
        NamespaceBinding* b = newestWithPrefix(w, *prefix);
        return (b != nullptr && (!uri || same(b->uri, uri))) ? b : nullptr;
    }
    if (uri) return newestInScopeWithUri(w, uri);
    return nullptr;
}

// The binding a starting element resolves to; a new one becomes pending.
NamespaceBinding* resolveElement(SAXWriter& w, const Text& prefix, const Text& uri) {
    if (!prefix && !uri) return nullptr;
    if (w.bindings == nullptr) return pushPendingBinding(w, prefix, uri);
    if (prefix) {
        NamespaceBinding* b = newestWithPrefix(w, *prefix);
        if (b != nullptr && (!uri || same(b->uri, uri))) return b;
        // An unknown prefix, or a known one with another URI: (re)bound
        // inside this element.
        return pushPendingBinding(w, prefix, uri);
    }
    // Only a URI: the first binding of it, if it has a prefix or is the
    // newest one; else a default namespace for this element. A prefix that
    // an inner element rebound to another URI is passed over (see
    // isShadowed): taking it would write the element into that other
    // namespace.
    NamespaceBinding* b = newestInScopeWithUri(w, uri);
    if (b != nullptr && (b->prefix || b == w.bindings)) return b;
    return pushPendingBinding(w, nullptr, uri);
}

// ---- The pending list ------------------------------------------------------

// An empty item, a reused one when a written tag left some.
PendingItem* newItem(SAXWriter& w) {
    PendingItem* item = w.spareItems;
    if (item == nullptr) return new PendingItem;
    w.spareItems = item->next;
    item->next = nullptr;
    return item;
}

void recycleItem(SAXWriter& w, PendingItem* item) {
    item->prefix.reset();
    item->local.clear();
    item->value.reset();
    item->uri.reset();
    item->link = nullptr;
    item->prefixFromBinding = false;
    item->next = w.spareItems;
    w.spareItems = item;
}

void appendPending(SAXWriter& w, PendingItem* item) {
    if (w.pendingTail == nullptr)
        w.pending = item;
    else
        w.pendingTail->next = item;
    w.pendingTail = item;
}

// Strict duplicate bookkeeping, then the attribute (its fields filled)
// joins the start tag.
void appendAttribute(SAXWriter& w, PendingItem* item) {
    if (w.strict && !item->local.empty() && w.pending != nullptr) {
        for (PendingItem* earlier = w.pending->next; earlier != nullptr; earlier = earlier->next) {
            if (earlier->local != item->local) continue;
            if (!earlier->prefix && !item->prefix && !earlier->uri && !item->uri) {
                setError(w, kErrDuplicateAttribute);
                setMessage(w, item->local);
            } else if (earlier->prefix && item->prefix && *earlier->prefix == *item->prefix) {
                setError(w, kErrDuplicateAttribute);
                setMessage(w, qualified(item->prefix, item->local));
            } else if ((!item->prefix && (earlier->prefix || earlier->uri || item->uri)) ||
                       (item->prefix && !earlier->prefix && earlier->uri)) {
                // Checked when the tag is written, once the namespaces are
                // known; a later link replaces an earlier one.
                earlier->link = item;
            }
        }
    }
    appendPending(w, item);
}

void appendAttribute(SAXWriter& w, Text prefix, const char* local, Text value) {
    PendingItem* item = newItem(w);
    item->prefix = std::move(prefix);
    item->local.assign(local);
    item->value = std::move(value);
    appendAttribute(w, item);
}

// xmlns="U" as an attribute: satisfies the pending default binding with
// the same URI, else binds the default namespace.
void declareDefaultByAttribute(SAXWriter& w, const char* value) {
    Text uri = copyOf(value);
    if (w.pendingBinding != nullptr && !w.pendingBinding->prefix && uri &&
        same(w.pendingBinding->uri, uri)) {
        moveToHead(w, w.pendingBinding);
        w.pendingBinding = nullptr;
    } else {
        pushBinding(w, nullptr, copyOf(uri));
    }
    appendAttribute(w, nullptr, "xmlns", std::move(uri));
}

// One attribute of a start tag (list entry or command 10).
void addAttributeItem(SAXWriter& w, const char* qName, const char* value, const char* uri) {
    if (w.strict && !isValidQName(w, qName)) {
        setError(w, kErrInvalidName);
        setMessage(w, qName);
    }
    PendingItem* item = newItem(w);
    splitInto(qName, item->prefix, item->local);
    if (isXmlns(item->prefix)) {
        declareNamespace(w, value, item->local.c_str());
        recycleItem(w, item);
    } else if (!item->prefix && isXmlns(item->local)) {
        recycleItem(w, item);
        declareDefaultByAttribute(w, value);
    } else {
        item->value.assign(value);
        item->uri.assign(uri);
        appendAttribute(w, item);
    }
}

// ---- The strict element stack -------------------------------------------

void pushElementRecord(SAXWriter& w, const PendingItem& element, const NamespaceBinding* binding) {
    if (w.scope == nullptr) w.scope = new WriterScope;
    WriterScope& scope = *w.scope;
    if (scope.open == nullptr) {
        if (scope.rootStarted && !w.fragment) setError(w, kErrSecondRoot);
        scope.rootStarted = true;
    }
    ElementRecord* record = w.spareRecords;
    if (record != nullptr)
        w.spareRecords = record->next;
    else
        record = new ElementRecord;
    record->uri = element.uri;
    record->local = element.local;
    record->prefix = element.prefix;
    record->binding = binding;
    record->next = scope.open;
    scope.open = record;
}

// Pops the open element; it stays as the "current" one until the next pop.
ElementRecord* popElementRecord(SAXWriter& w) {
    if (w.scope == nullptr || w.scope->open == nullptr) return nullptr;
    WriterScope& scope = *w.scope;
    if (scope.current != nullptr) {
        scope.current->next = w.spareRecords;
        w.spareRecords = scope.current;
    }
    scope.current = scope.open;
    scope.open = scope.open->next;
    scope.current->next = nullptr;
    return scope.current;
}

// ---- Writing the start tag -------------------------------------------------

void putPrefixed(SAXWriter& w, const Text& prefix, const std::string& local) {
    if (prefix) {
        putHost(w, *prefix);
        put(w, markup().colon);
    }
    putHost(w, local);
}

void setUnboundError(SAXWriter& w, const Text& prefix, const Text& uri) {
    setError(w, kErrUnboundPrefix);
    setMessage(w, prefix ? *prefix : (uri ? *uri : std::string()));
}

void writeElementName(SAXWriter& w, const PendingItem& element) {
    if (!element.prefix && !element.uri) {
        putHost(w, element.local);
        return;
    }
    // An element given by its URI alone is looked up by that URI alone, as
    // its end tag will be: the start tag's own declarations may have given
    // the URI a newer binding than the one found when the element started
    // (xmlns:a for an attribute, with the element's URI), and start and end
    // tag must be written with the same prefix. The end tag is checked
    // against the binding written here.
    NamespaceBinding* binding = element.prefixFromBinding ? lookup(w, Text(), element.uri)
                                                          : lookup(w, element.prefix, element.uri);
    if (binding != nullptr) {
        putPrefixed(w, binding->prefix, element.local);
        if (w.strict && w.scope != nullptr && w.scope->open != nullptr)
            w.scope->open->binding = binding;
        return;
    }
    putHost(w, element.local);
    if (w.strict) setUnboundError(w, element.prefix, element.uri);
}

void writePendingDeclaration(SAXWriter& w) {
    NamespaceBinding* binding = w.pendingBinding;
    if (binding == nullptr) return;
    const Markup& m = markup();
    put(w, m.blank);
    put(w, m.xmlns);
    if (binding->prefix) {
        put(w, m.colon);
        putHost(w, *binding->prefix);
    }
    put(w, m.equalsQuote);
    if (binding->uri) putHost(w, *binding->uri, XMLFormatter::AttrEscapes);
    put(w, m.quote);
    if (!binding->uri && binding->prefix && w.strict && w.errorCode == 0) {
        setError(w, kErrPrefixWithoutUri);
        setMessage(w, *binding->prefix);
    }
    w.pendingBinding = nullptr;
}

const std::string* prefixOf(const NamespaceBinding* binding) {
    return (binding != nullptr && binding->prefix) ? binding->prefix.get() : nullptr;
}

// Writes the attributes; false when an unbound one stopped the writing.
void writeAttributes(SAXWriter& w, PendingItem* first) {
    const Markup& m = markup();
    for (PendingItem* item = first; item != nullptr; item = item->next) {
        const bool declaration = isXmlns(item->prefix);
        const bool namespaced = !declaration && (item->prefix || item->uri);
        NamespaceBinding* binding = namespaced ? lookup(w, item->prefix, item->uri) : nullptr;
        const bool unbound = namespaced && binding == nullptr;
        put(w, m.blank);
        if (declaration || unbound)
            putPrefixed(w, item->prefix, item->local);
        else if (namespaced)
            putPrefixed(w, binding->prefix, item->local);
        else
            putHost(w, item->local);
        put(w, m.equalsQuote);
        if (item->value) putHost(w, *item->value, XMLFormatter::AttrEscapes);
        put(w, m.quote);
        if (!w.strict) continue;
        if (unbound) {
            setUnboundError(w, item->prefix, item->uri);
            return;  // the remaining attributes are not written
        }
        if (item->link != nullptr) {
            const PendingItem& other = *item->link;
            const std::string* mine = prefixOf(binding);
            const std::string* theirs = prefixOf(lookup(w, other.prefix, other.uri));
            if ((mine != nullptr && theirs != nullptr && *mine == *theirs) ||
                (mine == nullptr && theirs == nullptr)) {
                setError(w, kErrDuplicateNamespacedAttribute);
                setMessage(w, qualified(item->prefix, item->local));
            }
        }
    }
}

void writeStartTag(SAXWriter& w, uint32_t trigger) {
    PendingItem* element = w.pending;
    if (element == nullptr) return;
    const Markup& m = markup();
    indent(w);
    put(w, m.open);
    writeElementName(w, *element);
    writePendingDeclaration(w);
    writeAttributes(w, element->next);
    if (w.lastCommand == LUM_WRITER_START_ELEMENT) {
        put(w, m.close);
        // Characters stay on the tag's line.
        if (w.formatted && trigger != LUM_WRITER_CHARACTERS) put(w, m.lineFeed);
        ++w.depth;
    } else {
        put(w, m.closeEmpty);
        lineFeedIfFormatted(w);
        if (w.strict) popElementRecord(w);
        dropBindings(w, w.depth);
    }
    clearPending(w);
}

}  // namespace

// ---- Entry points of the element commands ---------------------------------

void clearPending(SAXWriter& w) {
    while (w.pending != nullptr) {
        PendingItem* next = w.pending->next;
        recycleItem(w, w.pending);
        w.pending = next;
    }
    w.pendingTail = nullptr;
}

void freeSpareRecords(SAXWriter& w) {
    while (w.spareItems != nullptr) {
        PendingItem* next = w.spareItems->next;
        delete w.spareItems;
        w.spareItems = next;
    }
    while (w.spareRecords != nullptr) {
        ElementRecord* next = w.spareRecords->next;
        delete w.spareRecords;
        w.spareRecords = next;
    }
}

void dropBindings(SAXWriter& w, int32_t depth) {
    while (w.bindings != nullptr && w.bindings->depth >= depth) {
        NamespaceBinding* next = w.bindings->next;
        if (w.pendingBinding == w.bindings) w.pendingBinding = nullptr;
        delete w.bindings;
        w.bindings = next;
    }
}

void freeBindings(SAXWriter& w) {
    dropBindings(w, INT32_MIN);
    w.pendingBinding = nullptr;
}

void completeStartTag(SAXWriter& w, uint32_t command) {
    // Attributes, declarations and a restart of memory output still
    // belong to the open start tag.
    if (command == LUM_WRITER_ADD_ATTRIBUTE || command == LUM_WRITER_DECLARE_NAMESPACE ||
        command == LUM_WRITER_RESTART_MEMORY)
        return;
    if (w.lastCommand == LUM_WRITER_START_ELEMENT || w.lastCommand == LUM_WRITER_EMPTY_ELEMENT)
        writeStartTag(w, command);
    w.lastCommand = command;
}

void startElement(SAXWriter& w, const char* qName, const char* uri, const SaxAttrList* attributes) {
    // Leftovers of attributes added while no start tag was open.
    clearPending(w);
    if (w.strict) {
        if (!isValidQName(w, qName)) {
            setError(w, kErrInvalidName);
            setMessage(w, qName);
        }
        if (w.state == kStateProlog && w.depth == -1) {
            w.depth = 0;
            if (qName == nullptr || std::strcmp(qName, w.nameBuffer.text()) != 0)
                setError(w, kErrRootNotDoctype);
        }
    }
    PendingItem* element = newItem(w);
    splitInto(qName, element->prefix, element->local);
    element->uri.assign(uri);
    NamespaceBinding* binding = resolveElement(w, element->prefix, element->uri);
    element->prefixFromBinding = binding != nullptr && !element->prefix;
    if (binding != nullptr) {
        element->prefix = binding->prefix;
        element->uri = binding->uri;
    }
    appendPending(w, element);

    if (w.strict) pushElementRecord(w, *element, binding);

    if (attributes == nullptr || attributes->entries == nullptr) return;
    for (int32_t i = 0; i < attributes->count && i < attributes->capacity; ++i) {
        const SaxAttribute& entry = attributes->entries[i];
        if (entry.qName == nullptr) continue;
        addAttributeItem(w, entry.qName, entry.value, entry.uri);
    }
}

void addAttribute(SAXWriter& w, const char* qName, const char* value, const char* uri) {
    addAttributeItem(w, qName != nullptr ? qName : "", value, uri);
}

void declareNamespace(SAXWriter& w, const char* uri, const char* prefix) {
    Text p = copyOf(prefix != nullptr && prefix[0] != '\0' ? prefix : nullptr);
    Text u = copyOf(uri != nullptr && uri[0] != '\0' ? uri : nullptr);
    // Un-declaring a prefix is not allowed.
    if (w.strict && p && !u) {
        setError(w, kErrUndeclaredPrefix);
        setMessage(w, *p);
    }
    NamespaceBinding* pending = w.pendingBinding;
    if (pending != nullptr && same(pending->prefix, p)) {
        bool satisfied = false;
        if (pending->uri) {
            satisfied = u && *u == *pending->uri;
            if (!satisfied && w.strict) {
                setError(w, kErrPendingPrefixRebound);
                setMessage(w, pending->prefix ? *pending->prefix : std::string());
            }
        } else if (u) {
            pending->uri = copyOf(u);
            satisfied = true;
        } else if (w.strict) {
            setError(w, kErrUndeclaredPrefix);
            setMessage(w, pending->prefix ? *pending->prefix : std::string());
        }
        if (satisfied) {
            moveToHead(w, pending);
            w.pendingBinding = nullptr;
        }
    } else {
        pushBinding(w, copyOf(p), copyOf(u));
    }
    if (p)
        appendAttribute(w, Text(std::string("xmlns")), p->c_str(), std::move(u));
    else
        appendAttribute(w, nullptr, "xmlns", std::move(u));
}

void endElement(SAXWriter& w, const char* qName, const char* uri) {
    if (w.strict && !isValidQName(w, qName)) {
        setError(w, kErrInvalidName);
        setMessage(w, qName);
    }
    SplitName name = split(qName);
    Text namespaceUri = copyOf(uri);
    NamespaceBinding* binding = lookup(w, name.prefix, namespaceUri);
    Text written = binding != nullptr ? copyOf(binding->prefix) : copyOf(name.prefix);

    if (w.strict && w.errorCode == 0) {
        ElementRecord* open = popElementRecord(w);
        bool unresolved = (name.prefix || namespaceUri) && binding == nullptr;
        if (open == nullptr || open->local != name.local || unresolved || open->binding != binding) {
            setError(w, kErrEndTagMismatch);
            setMessage(w, open != nullptr ? qualified(open->prefix, open->local) : std::string());
        }
    }
    --w.depth;
    dropBindings(w, w.depth);

    const Markup& m = markup();
    if (w.formatted && w.state != kStateAfterText && w.depth >= 1) indent(w);
    put(w, m.openEnd);
    putPrefixed(w, written, name.local);
    put(w, m.close);
    lineFeedIfFormatted(w);
}

WriterScope::~WriterScope() {
    while (open != nullptr) {
        ElementRecord* next = open->next;
        delete open;
        open = next;
    }
    delete current;
}

}  // namespace lumxml
