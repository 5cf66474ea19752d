// The registrar's actions.
#include "media_receiver_registrar.h"

#include "service_ids.h"
#include "soap.h"

#include <string>

namespace mdbd {

void HandleMediaReceiverRegistrar(UpnpActionRequest *request) {
    const std::string action = UpnpActionRequest_get_ActionName_cstr(request);
    if (action == "IsAuthorized" || action == "IsValidated") {
        Answer(request, kRegistrarType, {{"Result", "1"}});
    } else if (action == "RegisterDevice") {
        Answer(request, kRegistrarType, {{"RegistrationRespMsg", ""}});
    } else {
        AnswerError(request, kInvalidAction, "Invalid Action");
    }
}

}  // namespace mdbd
