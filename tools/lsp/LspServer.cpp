#include "tools/lsp/LspServer.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <vector>

#include "tools/VersionInfo.h"
#include "tools/load/TemporaryPaths.h"
#include "tools/lsp/Completion.h"
#include "tools/lsp/DocumentAnalysis.h"
#include "tools/lsp/HoverIndex.h"
#include "tools/lsp/LspText.h"

namespace korva::tool {

namespace {

// JSON-RPC's and the protocol's error codes.
constexpr int kParseError = -32700;
constexpr int kInvalidRequest = -32600;
constexpr int kMethodNotFound = -32601;
constexpr int kInvalidParams = -32602;
constexpr int kServerNotInitialized = -32002;
constexpr int kFullSync = 1;

Json capabilities() {
    return {{"capabilities",
             {{"textDocumentSync",
               {{"openClose", true}, {"change", kFullSync}, {"save", {{"includeText", false}}}}},
              {"hoverProvider", true},
              {"completionProvider", {{"triggerCharacters", {"<", " ", "\""}}}},
              {"codeActionProvider", {{"codeActionKinds", {"quickfix"}}}},
              {"documentSymbolProvider", true}}},
            {"serverInfo", {{"name", "spatializer-paramtool"}, {"version", VersionInfo::tool()}}}};
}

// A position's member; -1, which is outside every text, when it is no integer.
long coordinate(const Json& position, const char* key) {
    const Json& value = position.at(key);
    return value.is_number_integer() ? value.get<long>() : -1;
}

bool before(const Json& a, const Json& b) {
    const auto at = [](const Json& p) {
        return std::make_pair(coordinate(p, "line"), coordinate(p, "character"));
    };
    return at(a) <= at(b);
}

bool intersects(const Json& a, const Json& b) {
    return before(a.at("start"), b.at("end")) && before(b.at("start"), a.at("end"));
}

// Writes all of text to fd; a reader that has gone is no signal.
void writeAll(int fd, const std::string& text) {
    for (size_t done = 0; done < text.size();) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno != EINTR) {
            return;
        }
        done += static_cast<size_t>(std::max<ssize_t>(n, 0));
    }
}

// Whether a JSON text nests arrays and objects deeper than an LSP message ever does. Too deep a
// value would take the stack: the JSON library copies and frees it recursively.
bool nestsTooDeep(const std::string& body) {
    constexpr int kMaxDepth = 256;
    int depth = 0;
    bool quoted = false;
    for (size_t i = 0; i < body.size(); i++) {
        const char c = body[i];
        if (quoted) {
            i += c == '\\' ? 1 : 0;
            quoted = c != '"';
        } else if (c == '"') {
            quoted = true;
        } else if ((c == '[' || c == '{') && ++depth > kMaxDepth) {
            return true;
        } else if (c == ']' || c == '}') {
            depth--;
        }
    }
    return false;
}

}  // namespace

LspServer::LspServer(int inputFd, int outputFd, Options options)
    : mInput(inputFd), mOutput(outputFd), mOptions(options) {}

LspServer::LspServer(int inputFd, int outputFd) : LspServer(inputFd, outputFd, Options()) {}

LspServer::~LspServer() {
    for (auto& [uri, document] : mDocuments) {
        stopAnalysis(document);
    }
}

int LspServer::run() {
    // A client that has gone is seen as the end of the input, not as a signal.
    signal(SIGPIPE, SIG_IGN);
    bool reading = true;
    const auto answerAll = [this] {
        std::string body;
        for (MessageStream::Next next;
             !mExited && (next = mInput.next(&body)) != MessageStream::Next::kNone;) {
            if (next == MessageStream::Next::kBadFrame) {
                fail(nullptr, kParseError, "no valid Content-Length header");
            } else {
                handle(body);
            }
        }
    };
    while (!mExited && reading) {
        std::vector<pollfd> fds{{mInput.fd(), POLLIN, 0}};
        for (const auto& [uri, document] : mDocuments) {
            if (document.pipe >= 0) {
                fds.push_back({document.pipe, POLLIN, 0});
            }
        }
        if (poll(fds.data(), fds.size(), -1) < 0 && errno != EINTR) {
            break;
        }
        if (fds[0].revents != 0) {
            reading = mInput.fill();
            // A newer version read here ends an older one's analysis before it is published.
            answerAll();
        }
        for (auto& [uri, document] : mDocuments) {
            for (size_t i = 1; i < fds.size() && !mExited; i++) {
                if (fds[i].revents != 0 && fds[i].fd == document.pipe) {
                    collect(uri, document);
                }
            }
        }
    }
    for (auto& [uri, document] : mDocuments) {
        stopAnalysis(document);
    }
    return mShutdown ? 0 : 1;
}

void LspServer::fail(const Json& id, int code, const std::string& message) {
    send({{"jsonrpc", "2.0"}, {"id", id}, {"error", {{"code", code}, {"message", message}}}});
}

void LspServer::handle(const std::string& body) {
    Json message =
        nestsTooDeep(body) ? Json(Json::value_t::discarded) : Json::parse(body, nullptr, false);
    if (message.is_discarded()) {
        fail(nullptr, kParseError, "the message is not JSON, or nests deeper than JSON-RPC does");
        return;
    }
    const bool hasId = message.is_object() && message.contains("id");
    const bool validId = hasId && (message["id"].is_number_integer() || message["id"].is_string());
    // Copied only once it is known to be small: a deeply nested value would take the stack.
    const Json id = validId ? message["id"] : Json();
    static const Json kNone;
    const Json& method =
        message.is_object() && message.contains("method") ? message["method"] : kNone;
    if ((hasId && !validId) || (!method.is_string() && !hasId)) {
        fail(nullptr, kInvalidRequest, "a message needs a method or an id");
        return;
    }
    if (!method.is_string()) {
        // A response, to a request this server never sends; or a request without its method.
        if (!message.contains("result") && !message.contains("error")) {
            fail(id, kInvalidRequest, "a request needs a method");
        }
        return;
    }
    const std::string name = method.get<std::string>();
    static const Json kNoParams = Json::object();
    const Json& params = message.contains("params") ? message["params"] : kNoParams;
    try {
        if (!hasId) {
            notification(name, params);
        } else if (!mInitialized && name != "initialize") {
            fail(id, kServerNotInitialized, "initialize first");
        } else if (mShutdown) {
            fail(id, kInvalidRequest, "the server has shut down");
        } else if (Document* document =
                       name == "textDocument/hover" || name == "textDocument/documentSymbol"
                               ? find(params)
                               : nullptr;
                   document != nullptr && document->child > 0 && !document->outlined) {
            document->waiting.push_back(body);
        } else if (Json result = request(name, params); result.is_discarded()) {
            fail(id, kMethodNotFound, "unknown method " + name);
        } else {
            respond(id, result);
        }
    } catch (const Json::exception& error) {
        if (hasId) {
            fail(id, kInvalidParams, error.what());
        }
    }
}

LspServer::Document* LspServer::find(const Json& params) {
    const auto found = mDocuments.find(params.at("textDocument").at("uri").get<std::string>());
    return found != mDocuments.end() ? &found->second : nullptr;
}

Json LspServer::request(const std::string& method, const Json& params) {
    if (method == "initialize") {
        mInitialized = true;
        return capabilities();
    }
    if (method == "shutdown") {
        mShutdown = true;
        return nullptr;
    }
    const bool positioned = method == "textDocument/hover" || method == "textDocument/completion";
    const bool known = positioned || method == "textDocument/codeAction" ||
                       method == "textDocument/documentSymbol";
    if (!known) {
        return Json(Json::value_t::discarded);
    }
    const Document* document = find(params);
    const Json empty = method == "textDocument/hover" ? Json() : Json::array();
    if (document == nullptr) {
        return empty;
    }
    const Json analysis =
        document->analysis.is_null() ? DocumentAnalysis::empty() : document->analysis;
    if (positioned) {
        const long line = coordinate(params.at("position"), "line");
        const long character = coordinate(params.at("position"), "character");
        if (!LspText(document->text).contains(line, character)) {
            return empty;
        }
        return method == "textDocument/hover"
                   ? HoverIndex::at(analysis["hover"], document->text, line, character)
                   : Completion::items(document->text, line, character);
    }
    if (method == "textDocument/documentSymbol") {
        return analysis["symbols"];
    }
    // An analysis of an older text would edit the wrong bytes.
    Json actions = Json::array();
    if (document->analysedText != document->text) {
        return actions;
    }
    const std::string& uri = params["textDocument"]["uri"].get_ref<const std::string&>();
    for (const Json& action : analysis["actions"]) {
        const Json& diagnostic = analysis["diagnostics"].at(action["diagnostic"].get<size_t>());
        if (intersects(diagnostic["range"], params.at("range"))) {
            actions.push_back({{"title", action["title"]},
                               {"kind", "quickfix"},
                               {"diagnostics", {diagnostic}},
                               {"edit", {{"changes", {{uri, {action["edit"]}}}}}}});
        }
    }
    return actions;
}

void LspServer::notification(const std::string& method, const Json& params) {
    if (method == "exit") {
        mExited = true;
        return;
    }
    if (!mInitialized) {
        return;
    }
    const bool opened = method == "textDocument/didOpen";
    const std::string uri = opened || method == "textDocument/didChange" ||
                                    method == "textDocument/didSave" ||
                                    method == "textDocument/didClose"
                                ? params.at("textDocument").at("uri").get<std::string>()
                                : "";
    const auto found = mDocuments.find(uri);
    if (uri.empty() || (!opened && found == mDocuments.end())) {
        return;
    }
    Document& document = mDocuments[uri];
    const Json& textDocument = params["textDocument"];
    if (opened) {
        document.text = textDocument.at("text").get<std::string>();
    } else if (method == "textDocument/didChange") {
        // Whole texts: the server asked for full synchronisation, so the last one is the text.
        const Json& changes = params.at("contentChanges");
        if (!changes.empty()) {
            document.text = changes.back().at("text").get<std::string>();
        }
    } else if (method == "textDocument/didSave") {
        const std::string saved =
            params.contains("text") ? params["text"].get<std::string>() : document.text;
        // The saved text's analysis is published or under way.
        if (saved == document.text && (document.child > 0 || document.analysedText == saved)) {
            return;
        }
        document.text = saved;
    } else if (method == "textDocument/didClose") {
        stopAnalysis(document);
        publish(uri, Json(), Json::array());
        const std::vector<std::string> waiting = std::move(document.waiting);
        mDocuments.erase(uri);
        // Asked of a document no longer open, they are answered empty.
        for (const std::string& body : waiting) {
            handle(body);
        }
        return;
    }
    // A save names no version; the text saved is the last one changed.
    if (textDocument.contains("version") && textDocument["version"].is_number_integer()) {
        document.version = textDocument["version"];
    }
    analyse(uri, document);
}

void LspServer::publish(const std::string& uri, const Json& version, const Json& diagnostics) {
    Json params = {{"uri", uri}};
    if (!version.is_null()) {
        params["version"] = version;
    }
    params["diagnostics"] = diagnostics;
    send({{"jsonrpc", "2.0"},
          {"method", "textDocument/publishDiagnostics"},
          {"params", std::move(params)}});
}

void LspServer::analyse(const std::string& uri, Document& document) {
    stopAnalysis(document);
    if (!mOptions.analyze) {
        document.analysis = DocumentAnalysis::empty();
        document.analysedText = document.text;
        return publish(uri, document.version, Json::array());
    }
    int ends[2];
    if (pipe(ends) != 0) {
        return;
    }
    const pid_t server = getpid();
    fflush(nullptr);
    pid_t child;
    {
        // The child takes a signal only once its own handling is in place.
        const TemporaryPaths::Hold hold;
        child = fork();
        if (child == 0) {
            // Its own group, so that ending it ends its loads too; and ended with the server.
            setpgid(0, 0);
            prctl(PR_SET_PDEATHSIG, SIGTERM);
            for (int stop : {SIGINT, SIGTERM, SIGPIPE}) {
                signal(stop, SIG_DFL);
            }
        }
    }
    if (child == 0) {
        if (getppid() != server) {
            _exit(1);
        }
        // The answer says what went wrong; the library's own messages name private files.
        const int quiet = open("/dev/null", O_RDWR);
        dup2(quiet, mInput.fd());
        dup2(quiet, mOutput);
        dup2(quiet, STDERR_FILENO);
        close(quiet);
        close(ends[0]);
        for (const auto& [other, earlier] : mDocuments) {
            if (earlier.pipe >= 0) {
                close(earlier.pipe);
            }
        }
        // Each part ends with a NUL, which JSON text never holds.
        DocumentAnalysis::run(uri, document.text, [&ends](const Json& part) {
            writeAll(ends[1], part.dump(-1, ' ', false, Json::error_handler_t::replace) +
                                  std::string(1, '\0'));
        });
        _exit(0);
    }
    close(ends[1]);
    if (child < 0) {
        close(ends[0]);
        return;
    }
    setpgid(child, child);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    document.child = child;
    document.pipe = ends[0];
    document.outlined = false;
}

void LspServer::stopAnalysis(Document& document) {
    if (document.child > 0) {
        // SIGTERM lets the analysis remove its temporary files.
        kill(-document.child, SIGTERM);
        while (waitpid(document.child, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    if (document.pipe >= 0) {
        close(document.pipe);
    }
    document.child = -1;
    document.pipe = -1;
    document.answer.clear();
}

void LspServer::collect(const std::string& uri, Document& document) {
    char bytes[64 * 1024];
    const ssize_t n = read(document.pipe, bytes, sizeof(bytes));
    if (n > 0) {
        document.answer.append(bytes, static_cast<size_t>(n));
        // The findings are published as soon as their part is whole; hover and outline follow.
        for (size_t end; (end = document.answer.find('\0')) != std::string::npos;) {
            const Json part = Json::parse(document.answer.substr(0, end), nullptr, false);
            document.answer.erase(0, end + 1);
            if (!part.is_object()) {
                stopAnalysis(document);
                return answerWaiting(document);
            }
            if (document.analysis.is_null()) {
                document.analysis = DocumentAnalysis::empty();
            }
            document.analysis.update(part);
            if (part.contains("diagnostics")) {
                document.analysedText = document.text;
                publish(uri, document.version, document.analysis["diagnostics"]);
            } else {
                document.outlined = true;
                answerWaiting(document);
            }
        }
        return;
    }
    if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
        return;
    }
    stopAnalysis(document);
    answerWaiting(document);
}

void LspServer::answerWaiting(Document& document) {
    const std::vector<std::string> waiting = std::move(document.waiting);
    document.waiting.clear();
    for (const std::string& body : waiting) {
        handle(body);
    }
}

}  // namespace korva::tool
