// mdbd: the reference DLNA media server of MDB. It shares folders of media with the TVs, phones
// and players of a home network: a UPnP MediaServer:1 device on libupnp whose ContentDirectory
// answers through the MDB library, an HTTP file server on libmicrohttpd that streams the files,
// and a scanner thread that keeps the catalogue current. See "mdbd --help".
#include "catalogue.h"
#include "catalogue_watcher.h"
#include "connection_manager.h"
#include "content_directory.h"
#include "eventing.h"
#include "file_server.h"
#include "library_lock.h"
#include "log.h"
#include "media_receiver_registrar.h"
#include "options.h"
#include "server_state.h"
#include "service_ids.h"
#include "upload_actions.h"
#include "upload_receiver.h"
#include "upload_timeout.h"
#include "upnp_device.h"

#include <mdb_platform.h>
#include <sqlite3.h>
#include <upnpconfig.h>

#include <limits.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using namespace mdbd;

/* The shared folders as absolute paths; false with a sentence for one that is no readable folder. */
bool ResolveFolders(const std::vector<std::string> &given, std::vector<std::string> &folders, std::string &error) {
    for (const std::string &folder : given) {
        char resolved[PATH_MAX];
        struct stat st;
        if (realpath(folder.c_str(), resolved) == nullptr || stat(resolved, &st) != 0 || !S_ISDIR(st.st_mode) ||
            access(resolved, R_OK | X_OK) != 0) {
            error = folder + " is not a folder mdbd can read";
            return false;
        }
        folders.emplace_back(resolved);
    }
    return true;
}

std::string DefaultName() {
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    return std::string("MDB on ") + (host[0] != '\0' ? host : "this device");
}

/* The signals mdbd waits for in its main thread, blocked in every thread it starts. */
sigset_t ServerSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGHUP);
    return signals;
}

int Serve(const Options &options, const std::vector<std::string> &folders) {
    const std::string statePath = options.database + ".state";
    ServerState state = LoadServerState(statePath);
    Catalogue catalogue;
    std::string error;
    if (!catalogue.Open(options.database, error)) {
        LogError("%s", error.c_str());
        return 1;
    }
    {
        LibraryGuard guard;
        QRV_MDB_DbGetRoots(catalogue.db());
    }
    state.running = true;
    if (!SaveServerState(statePath, state)) {
        LogError("the server state cannot be saved beside the catalogue (%s)", statePath.c_str());
        return 1;
    }
    Eventing eventing(state, statePath);
    eventing.SetInitialVariables(kConnectionManagerServiceId, [] {
        return StateVariables{{"SourceProtocolInfo", SourceProtocolInfo()}, {"SinkProtocolInfo", ""},
                              {"CurrentConnectionIDs", "0"}};
    });
    eventing.SetInitialVariables(kRegistrarServiceId, [] {
        return StateVariables{{"AuthorizationGrantedUpdateID", "0"}, {"AuthorizationDeniedUpdateID", "0"},
                              {"ValidationSucceededUpdateID", "0"}, {"ValidationRevokedUpdateID", "0"}};
    });
    UploadReceiver uploadReceiver(eventing, options.maxUpload);
    UploadActions uploadActions(eventing, uploadReceiver);
    ContentDirectory contentDirectory(eventing, uploadActions);
    CatalogueWatcher watcher(catalogue.db(), eventing, folders, options.watch);
    if (!watcher.PrepareRoots()) {
        return 1;
    }
    if (const unsigned left = UploadTimeout::DestroyLeftovers()) {
        LogNote("%u upload%s that an earlier run left unfinished %s destroyed", left, left == 1 ? "" : "s",
                left == 1 ? "was" : "were");
    }

    DeviceSettings settings;
    settings.interface = options.interface;
    settings.address = options.address;
    settings.port = options.port;
    settings.name = options.name.empty() ? DefaultName() : options.name;
    settings.udn = state.udn;
    UpnpDevice device;
    FileServer files;
    if (!device.Init(settings, error) || !files.Start(device.address(), options.httpPort, &uploadReceiver, error) ||
        !device.Register(settings,
                         {{kContentDirectoryServiceId, [&](UpnpActionRequest *r) { contentDirectory.Handle(r); }},
                          {kConnectionManagerServiceId, HandleConnectionManager},
                          {kRegistrarServiceId, HandleMediaReceiverRegistrar}},
                         eventing, error)) {
        LogError("%s", error.c_str());
        return 1;
    }
    UploadTimeout uploadTimeout(eventing, uploadReceiver);
    uploadTimeout.Start();
    watcher.Start();
    LogNote("\"%s\" serves %zu folder%s on http://%s:%u/description.xml (media files on port %u)",
            settings.name.c_str(), folders.size(), folders.size() == 1 ? "" : "s", device.address().c_str(),
            device.port(), files.port());

    const sigset_t signals = ServerSignals();
    for (;;) {
        int signal = 0;
        if (sigwait(&signals, &signal) != 0) {
            continue;
        }
        if (signal == SIGHUP) {
            watcher.RequestRescan();
            continue;
        }
        LogNote("stopping (%s); a second signal ends mdbd at once", strsignal(signal));
        break;
    }
    // A stop that hangs (a catalogue locked by another process) can still be ended.
    ::signal(SIGINT, SIG_DFL);
    ::signal(SIGTERM, SIG_DFL);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    watcher.Stop();
    uploadTimeout.Stop();
    device.Stop();  // byebye, and no request runs after it
    files.Stop();   // a body still arriving breaks off: its object is destroyed
    catalogue.Close();
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    Options options;
    std::string error;
    if (!ParseOptions(argc, argv, options, error)) {
        fprintf(stderr, "mdbd: %s (see \"mdbd --help\")\n", error.c_str());
        return 2;
    }
    if (options.help) {
        fputs(UsageText().c_str(), stdout);
        return 0;
    }
    if (options.version) {
        printf("mdbd %s (libupnp %s, SQLite %s)\n", MDBD_VERSION, UPNP_VERSION_STRING, sqlite3_libversion());
        return 0;
    }
    SetLogVerbosity(options.verbosity);
    std::vector<std::string> folders;
    if (!ResolveFolders(options.folders, folders, error)) {
        LogError("%s", error.c_str());
        return 1;
    }
    // A schema script other than the one the library was built with (a build tree's).
    const char *schema = getenv("MDB_SCHEMA_SCRIPT");
    if (schema != nullptr && schema[0] != '\0') {
        QRV_MDB_SetSchemaScriptPath(schema);
    }
    // Signals go to the main thread alone; a client that goes away does not kill the server.
    const sigset_t signals = ServerSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);
    return Serve(options, folders);
}
