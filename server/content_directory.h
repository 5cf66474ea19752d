// mdbd's ContentDirectory:1 service: Browse, Search, CreateObject and DestroyObject (uploads,
// upload_actions.h), the capabilities, SystemUpdateID and the feature list Samsung TVs ask for.
// Each request is logged at verbosity 1 with its outcome.
#pragma once

#include "list_answers.h"

#include <upnp.h>

namespace mdbd {

class Eventing;
class UploadActions;

class ContentDirectory {
public:
    ContentDirectory(Eventing &eventing, UploadActions &uploads) : m_eventing(eventing), m_uploads(uploads) {}

    // Answers one action request (from a libupnp worker thread); an unknown action gets 401.
    void Handle(UpnpActionRequest *request);

private:
    void Browse(UpnpActionRequest *request);
    void Search(UpnpActionRequest *request);
    void AnswerList(UpnpActionRequest *request, const ListRequest &list, ListAnswer (*answerOf)(const ListRequest &),
                    const char *what);

    Eventing &m_eventing;
    UploadActions &m_uploads;
};

}  // namespace mdbd
