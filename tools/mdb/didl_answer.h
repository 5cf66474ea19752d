// The DIDL-Lite answer of a Browse, Search or CreateObject (the document a media server prepares),
// and the forms in which the tool prints it.
#pragma once

#include <didl_document.h>

#include <string>

namespace mdbtool {

class DidlAnswer {
public:
    IXML_Document *doc() const { return m_document.doc(); }
    IXML_Element *root() const { return m_document.root(); }

    // The whole answer as indented XML, one element per line, two blanks per level.
    std::string Indented() const;
    // The answer as a server sends it in the Result argument: ixml's own compact serialisation.
    std::string Compact() const { return m_document.Compact(); }
    // One line per object: id, class (its last part), title and, for items, the resource URL.
    std::string Table() const;

private:
    mdbcommon::DidlDocument m_document;
};

}  // namespace mdbtool
