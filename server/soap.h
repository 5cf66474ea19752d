// Reading the arguments of a UPnP action request and answering it, through libupnp's action
// request record. libupnp frees the documents it is handed.
#pragma once

#include <upnp.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace mdbd {

// UPnP errors mdbd answers with.
enum UpnpError : int {
    kInvalidAction = 401,
    kInvalidArgs = 402,
    kActionFailed = 501,
    kNoSuchObject = 701,
    kInvalidSearchCriteria = 708,
    kInvalidSortCriteria = 709,
    kNoSuchContainer = 710,
    kRestrictedObject = 711,
    kBadMetadata = 712,
    kCannotProcess = 720,
};

// The arguments of one action: the child elements of the action element.
class ActionArguments {
public:
    explicit ActionArguments(const UpnpActionRequest *request);
    // The text of argument name (an empty element gives ""); false when there is no such argument.
    bool Text(const char *name, std::string &value) const;
    // An unsigned 32-bit decimal argument; false when it is missing or not such a number.
    bool Number(const char *name, uint32_t &value) const;

private:
    IXML_Node *m_action = nullptr;
};

// Fails the request with a UPnP error and its text (libupnp turns an empty text into 501).
void AnswerError(UpnpActionRequest *request, int code, const char *text);

// Answers the request with output arguments, in order. false (and error 501) when libupnp cannot
// build the answer.
bool Answer(UpnpActionRequest *request, const char *serviceType,
            const std::vector<std::pair<const char *, std::string>> &arguments);

}  // namespace mdbd
