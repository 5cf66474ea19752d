// The DIDL-Lite answer of a Browse, Search or CreateObject as a media server prepares it: an ixml
// document whose DIDL-Lite root carries the namespace declarations (the part the server adds;
// the library appends the objects), and the forms in which the tool prints it.
#pragma once

#include <ixml.h>

#include <string>

namespace mdbtool {

class DidlAnswer {
public:
    DidlAnswer();
    ~DidlAnswer();
    DidlAnswer(const DidlAnswer &) = delete;
    DidlAnswer &operator=(const DidlAnswer &) = delete;

    IXML_Document *doc() const { return m_doc; }
    IXML_Element *root() const { return m_root; }

    // The whole answer as indented XML, one element per line, two blanks per level.
    std::string Indented() const;
    // The answer as a server sends it in the Result argument: ixml's own compact serialisation.
    std::string Compact() const;
    // One line per object: id, class (its last part), title and, for items, the resource URL.
    std::string Table() const;

private:
    IXML_Document *m_doc = nullptr;
    IXML_Element *m_root = nullptr;
};

}  // namespace mdbtool
