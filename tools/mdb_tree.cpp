// mdb-tree: prints the container tree as a media server's clients see it, by sending Browse
// requests (BrowseDirectChildren) from the root down, the way a control point walks a server.
#include <mdb.h>
#include <mdb_platform.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

struct Object {
    std::string id, title, upnpClass;
    bool container;
};

std::string TextOf(IXML_Element *parent, const char *name) {
    IXML_NodeList *list = ixmlElement_getElementsByTagName(parent, name);
    std::string out;
    if (list != nullptr) {
        IXML_Node *text = ixmlNode_getFirstChild(ixmlNodeList_item(list, 0));
        if (text != nullptr && ixmlNode_getNodeValue(text) != nullptr) {
            out = ixmlNode_getNodeValue(text);
        }
        ixmlNodeList_free(list);
    }
    return out;
}

/* Browse one container's direct children; returns the status and fills the objects found. */
uint32_t BrowseChildren(const std::string &id, std::vector<Object> &out, uint32_t &total) {
    std::vector<unsigned char> filter(g_ulNumOfDlnaCols, 1);
    char errStr[32] = {0};
    MdbActionCtx ctx{};
    ctx.ulRequestedCount = 1000;
    ctx.ulAddrFamily = 2;
    ctx.pucFilter = filter.data();
    ctx.pcErrStr = errStr;
    ctx.pstDoc = ixmlDocument_createDocument();
    IXML_Element *root = ixmlDocument_createElement(ctx.pstDoc, "DIDL-Lite");
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(ctx.pstDoc), reinterpret_cast<IXML_Node *>(root));
    ctx.pstDidlRoot = root;

    uint32_t status = QRV_MDB_Browse(id.c_str(), 1, &ctx);
    total = ctx.ulTotalMatches;
    for (IXML_Node *n = ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(root)); n != nullptr;
         n = ixmlNode_getNextSibling(n)) {
        IXML_Element *e = reinterpret_cast<IXML_Element *>(n);
        const char *oid = ixmlElement_getAttribute(e, "id");
        out.push_back({oid != nullptr ? oid : "", TextOf(e, "dc:title"), TextOf(e, "upnp:class"),
                       std::string(ixmlNode_getNodeName(n)) == "container"});
    }
    ixmlDocument_free(ctx.pstDoc);
    return status;
}

void Walk(const std::string &id, int depth) {
    std::vector<Object> objects;
    uint32_t total = 0;
    uint32_t status = BrowseChildren(id, objects, total);
    if (status != MDB_OK) {
        std::printf("%*s(%s)\n", depth * 2, "", QRV_MDB_StatusName(status));
        return;
    }
    for (const Object &o : objects) {
        std::printf("%*s%-28s %-14s %s\n", depth * 2, "", o.title.c_str(), o.id.c_str(), o.upnpClass.c_str());
        if (o.container && depth < 8) {
            Walk(o.id, depth + 1);
        }
    }
}

}  // namespace

int main(int argc, char **argv) {
    if (argc > 1) {
        std::fprintf(stderr, "usage: %s\nPrints the container tree, browsing from the root.\n", argv[0]);
        return 2;
    }
    std::printf("%-28s %-14s %s\n", "title", "id", "upnp:class");
    Walk("0", 0);
    return 0;
}
