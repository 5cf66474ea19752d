// Action arguments from the SOAP body, and the answer document.
#include "soap.h"

#include <upnptools.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace mdbd {

namespace {

/* The element's name without its namespace prefix. */
const char *LocalName(IXML_Node *node) {
    const char *name = ixmlNode_getNodeName(node);
    const char *colon = name != nullptr ? std::strchr(name, ':') : nullptr;
    return colon != nullptr ? colon + 1 : name;
}

}  // namespace

ActionArguments::ActionArguments(const UpnpActionRequest *request) {
    IXML_Document *doc = UpnpActionRequest_get_ActionRequest(request);
    for (IXML_Node *node = doc != nullptr ? ixmlNode_getFirstChild(&doc->n) : nullptr; node != nullptr;
         node = ixmlNode_getNextSibling(node)) {
        if (ixmlNode_getNodeType(node) == eELEMENT_NODE) {
            m_action = node;
            break;
        }
    }
}

bool ActionArguments::Text(const char *name, std::string &value) const {
    for (IXML_Node *node = m_action != nullptr ? ixmlNode_getFirstChild(m_action) : nullptr; node != nullptr;
         node = ixmlNode_getNextSibling(node)) {
        const char *local = LocalName(node);
        if (ixmlNode_getNodeType(node) != eELEMENT_NODE || local == nullptr || std::strcmp(local, name) != 0) {
            continue;
        }
        value.clear();
        for (IXML_Node *text = ixmlNode_getFirstChild(node); text != nullptr; text = ixmlNode_getNextSibling(text)) {
            const char *part = ixmlNode_getNodeValue(text);
            if (ixmlNode_getNodeType(text) == eTEXT_NODE && part != nullptr) {
                value += part;
            }
        }
        return true;
    }
    return false;
}

bool ActionArguments::Number(const char *name, uint32_t &value) const {
    std::string text;
    if (!Text(name, text)) {
        return false;
    }
    const std::string::size_type first = text.find_first_not_of(" \t\r\n");
    const std::string::size_type last = text.find_last_not_of(" \t\r\n");
    if (first == std::string::npos || text.find_first_not_of("0123456789", first) <= last) {
        return false;
    }
    errno = 0;
    const unsigned long long number = std::strtoull(text.c_str() + first, nullptr, 10);
    if (errno != 0 || number > UINT32_MAX) {
        return false;
    }
    value = static_cast<uint32_t>(number);
    return true;
}

void AnswerError(UpnpActionRequest *request, int code, const char *text) {
    UpnpActionRequest_set_ErrCode(request, code);
    UpnpActionRequest_strcpy_ErrStr(request, text);
    UpnpActionRequest_set_ActionResult(request, nullptr);
}

bool Answer(UpnpActionRequest *request, const char *serviceType,
            const std::vector<std::pair<const char *, std::string>> &arguments) {
    const char *action = UpnpActionRequest_get_ActionName_cstr(request);
    IXML_Document *result = nullptr;
    if (arguments.empty()) {
        result = UpnpMakeActionResponse(action, serviceType, 0, nullptr);
    }
    for (const auto &argument : arguments) {
        if (UpnpAddToActionResponse(&result, action, serviceType, argument.first, argument.second.c_str()) !=
            UPNP_E_SUCCESS) {
            ixmlDocument_free(result);
            result = nullptr;
            break;
        }
    }
    if (result == nullptr) {
        AnswerError(request, kActionFailed, "Action Failed");
        return false;
    }
    UpnpActionRequest_set_ErrCode(request, UPNP_E_SUCCESS);
    UpnpActionRequest_set_ActionResult(request, result);
    return true;
}

}  // namespace mdbd
