// spatializer-paramtool lsp: a Language Server Protocol 3.17 server for tuning files, over two
// file descriptors. Each version of a document is analysed in a child process of its own (the
// library's store is one per process) while the server keeps answering; a newer version ends
// the analysis of an older one, and only the newest version's diagnostics are published.
#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include "tools/lsp/MessageStream.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

class LspServer {
public:
    struct Options {
        // Analyse documents in child processes; without, every analysis is empty.
        bool analyze = true;
    };

    // Two constructors for one with options = {}: a nested class's member initialisers are not
    // usable in a default argument of the class that holds it.
    LspServer(int inputFd, int outputFd, Options options);
    LspServer(int inputFd, int outputFd);
    ~LspServer();
    LspServer(const LspServer&) = delete;
    LspServer& operator=(const LspServer&) = delete;

    // Serves until exit or the end of the input: 0 after a shutdown request, else 1.
    int run();

private:
    struct Document {
        std::string text;
        Json version;
        Json analysis;  // of analysedText; null before the first
        std::string analysedText;
        pid_t child = -1;  // the analysis under way, of text
        int pipe = -1;
        std::string answer;
        // Whether the analysis under way has sent its hover index and outline; the hover and
        // outline requests that came before they did wait for them.
        bool outlined = false;
        std::vector<std::string> waiting;
    };

    // Answers one message's body.
    void handle(const std::string& body);
    Json request(const std::string& method, const Json& params);
    void notification(const std::string& method, const Json& params);
    void send(const Json& message) { MessageStream::write(mOutput, message); }
    void respond(const Json& id, const Json& result) {
        send({{"jsonrpc", "2.0"}, {"id", id}, {"result", result}});
    }
    void fail(const Json& id, int code, const std::string& message);

    void analyse(const std::string& uri, Document& document);
    void stopAnalysis(Document& document);
    // Answers the requests that waited for the analysis that has ended or sent its outline.
    void answerWaiting(Document& document);
    // Reads from a document's analysis; publishes when it is done.
    void collect(const std::string& uri, Document& document);
    void publish(const std::string& uri, const Json& version, const Json& diagnostics);
    Document* find(const Json& params);

    MessageStream mInput;
    int mOutput;
    Options mOptions;
    bool mInitialized = false;
    bool mShutdown = false;
    bool mExited = false;
    std::map<std::string, Document> mDocuments;
};

}  // namespace korva::tool
