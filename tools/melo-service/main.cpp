// melo-service: plays the web service on 127.0.0.1 so MELO runs end to end on
// one machine and the tests talk real HTTP(S). See --help.
#include "Certificate.h"
#include "Gallery.h"
#include "Routes.h"
#include "ServiceOptions.h"
#include "ServiceState.h"
#include "WebChannelScript.h"

#include <httplib.h>

#include <csignal>
#include <cstdio>
#include <thread>
#include <sys/socket.h>
#include <unistd.h>

namespace {

std::atomic<bool> g_stopping{false};

// Binds the port (0: any free one); returns the bound port or -1. A port
// another process listens on is refused (no port sharing).
int bindPort(httplib::Server& server, const std::string& host, int port)
{
    server.set_socket_options([](socket_t sock) {
        const int yes = 1;
        setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    if (port == 0)
        return server.bind_to_any_port(host);
    return server.bind_to_port(host, port) ? port : -1;
}

// Quits when standard input reaches its end: a harness that dies closes it.
void watchStandardInput()
{
    char buffer[256];
    while (read(STDIN_FILENO, buffer, sizeof buffer) > 0) {
    }
    kill(getpid(), SIGTERM);
}

} // namespace

int main(int argc, char** argv)
{
    ServiceOptions options;
    options.samplesDir = MELO_SERVICE_SAMPLES_DIR;
    options.pagesDir = MELO_SERVICE_PAGES_DIR;
    options.init.newversion = MELO_SERVICE_VERSION;
    int exitCode = 0;
    if (!parseServiceOptions(argc, argv, &options, &exitCode))
        return exitCode;

    // Every thread started from here on leaves these signals to sigwait below.
    sigset_t quitSignals;
    sigemptyset(&quitSignals);
    sigaddset(&quitSignals, SIGINT);
    sigaddset(&quitSignals, SIGTERM);
    sigaddset(&quitSignals, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &quitSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    SelfSignedCertificate certificate;
    std::string error;
    if (!makeSelfSignedCertificate(&certificate, &error)) {
        std::fprintf(stderr, "melo-service: %s\n", error.c_str());
        return 1;
    }
    httplib::SSLServer https(certificate.cert.get(), certificate.key.get());
    httplib::Server http;
    if (!https.is_valid()) {
        std::fprintf(stderr, "melo-service: TLS set-up failed\n");
        return 1;
    }

    ServiceState state(options.init);
    const Gallery gallery(options.samplesDir);
    const std::string script = webChannelScript();
    if (script.empty())
        std::fprintf(stderr, "melo-service: Qt WebChannel script not found; pages run without the client\n");
    ServiceContext context{state, gallery, options.pagesDir, script, g_stopping};
    addRoutes(https, context);
    addRoutes(http, context);

    const int httpsPort = bindPort(https, options.host, options.httpsPort);
    const int httpPort = bindPort(http, options.host, options.httpPort);
    if (httpsPort < 0 || httpPort < 0) {
        std::fprintf(stderr, "melo-service: cannot listen on %s port %d\n", options.host.c_str(),
                     httpsPort < 0 ? options.httpsPort : options.httpPort);
        return 1;
    }
    std::thread httpsThread([&https] { https.listen_after_bind(); });
    std::thread httpThread([&http] { http.listen_after_bind(); });
    std::printf("melo-service ready https=%d http=%d\n", httpsPort, httpPort);
    std::fflush(stdout);
    if (options.exitOnStdinEof)
        std::thread(watchStandardInput).detach();

    int received = 0;
    sigwait(&quitSignals, &received);
    g_stopping = true;
    https.stop();
    http.stop();
    httpsThread.join();
    httpThread.join();
    return 0;
}
