// The DIDL-Lite answer of a Browse, Search or CreateObject as a media server prepares it for the
// library: an ixml document whose DIDL-Lite root carries the namespace declarations (the part the
// server adds; the library appends the objects), and its compact form for a SOAP Result.
#pragma once

#include <ixml.h>

#include <cstdint>
#include <string>
#include <vector>

namespace mdbcommon {

class DidlDocument {
public:
    DidlDocument();
    ~DidlDocument();
    DidlDocument(const DidlDocument &) = delete;
    DidlDocument &operator=(const DidlDocument &) = delete;

    // NULL when the document could not be made.
    IXML_Document *doc() const { return m_doc; }
    IXML_Element *root() const { return m_root; }

    // The objects appended under the root.
    uint32_t ObjectCount() const;
    // Removes the first count objects (a page that the library does not begin where asked).
    void DropFirst(uint32_t count);
    // Removes the objects after the first count.
    void KeepFirst(uint32_t count);
    // Orders the objects by dc:title, ignoring ASCII case (a list that the library reads in no
    // order).
    void SortByTitle(bool descending);
    // Sets the parentID of every object.
    void SetParentIds(const std::string &parentId);
    // Moves every object below container: its id becomes container followed by the part of its id
    // from the last separator on ("0.1.257,17" to "0.1.257|3,17" for ','), its parentID container.
    void RebaseIds(const std::string &container, char separator);
    // The root and its objects without an XML declaration and without whitespace between
    // elements: the Result text.
    std::string Compact() const;
    // Each object in the same form, in order: Compact() is the root's start tag, these, and its
    // end tag.
    std::vector<std::string> ObjectTexts() const;

private:
    IXML_Document *m_doc = nullptr;
    IXML_Element *m_root = nullptr;
};

}  // namespace mdbcommon
