// The language server driven the way an editor drives it, through a pair of pipes: framing that
// goes wrong, the lifecycle and its exit status, analyses that a newer change ends, diagnostics
// at their causes, quick fixes that make the text the undo makes, and no temporary file left.

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <regex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "TestPaths.h"
#include "tools/lsp/DocumentAnalysis.h"
#include "tools/lsp/LspServer.h"
#include "tools/lsp/LspText.h"
#include "tools/lsp/MessageStream.h"

namespace korva::tool {
namespace {

// A 3.4 file whose speaker endpoint misspells the attribute of its dialog enhancer amount; the
// comment before it carries a two-unit character, so its columns differ from its bytes.
const std::string kMisspelt = R"(<?xml version="1.0"?>
<kvx_spatializer_tuning>
    <format_version major="3" minor="4" maintenance="0"/>
    <preset id="2" name="p2" type="ieq">
        <data>
            <ieq>
                <band_ieq frequency="100" target="32"/>
            </ieq>
        </data>
    </preset>
    <profile id="0" name="p">
        <data>
            <volume-modeler-enable value="true"/>
            <endpoint_type id="speaker">
                <include ieq_preset="2"/>
                <!--𝄞--><dialog-enhancer-amount vaule="4"/>
            </endpoint_type>
        </data>
    </profile>
</kvx_spatializer_tuning>
)";
constexpr int kMisspeltLine = 15;
const std::string kUri = "file:///tuning.xml";
const LspServer::Options kWithoutAnalyses{false};

std::string framed(const std::string& body) {
    return "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

Json request(int id, const std::string& method, const Json& params = Json::object()) {
    return {{"jsonrpc", "2.0"}, {"id", id}, {"method", method}, {"params", params}};
}

Json notification(const std::string& method, const Json& params) {
    return {{"jsonrpc", "2.0"}, {"method", method}, {"params", params}};
}

// The LSP Range of characters [from, to) of a line.
Json lineRange(int line, int from, int to) {
    return {{"start", {{"line", line}, {"character", from}}},
            {"end", {{"line", line}, {"character", to}}}};
}

Json opened(const std::string& text, int version = 1) {
    return notification(
        "textDocument/didOpen",
        {{"textDocument",
          {{"uri", kUri}, {"languageId", "xml"}, {"version", version}, {"text", text}}}});
}

Json changed(const std::string& text, int version) {
    return notification("textDocument/didChange",
                        {{"textDocument", {{"uri", kUri}, {"version", version}}},
                         {"contentChanges", {{{"text", text}}}}});
}

// The diagnostic of a publication whose message names word, or null.
Json diagnosticNaming(const Json& publish, const std::string& word) {
    for (const Json& diagnostic : publish["params"]["diagnostics"]) {
        if (diagnostic["message"].get<std::string>().find(word) != std::string::npos) {
            return diagnostic;
        }
    }
    return nullptr;
}

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    return names;
}

// A server on a thread of its own, an editor's end of its pipes, and TMPDIR a private folder that
// every test leaves empty.
class LspServerTest : public testing::Test {
protected:
    void SetUp() override {
        char folder[] = "/tmp/lsp-server-test.XXXXXX";
        ASSERT_NE(mkdtemp(folder), nullptr);
        mFolder = folder;
        setenv("TMPDIR", folder, 1);
    }

    void TearDown() override {
        finish();
        // Loads that a stopped analysis had under way end on their own, removing their files.
        for (int i = 0; i < 500 && !filesIn(mFolder).empty(); i++) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_EQ(filesIn(mFolder), std::vector<std::string>());
        rmdir(mFolder.c_str());
    }

    // A server on a thread, or in a process of its own (its pid) that a signal can end.
    pid_t start(LspServer::Options options = LspServer::Options(), bool apart = false) {
        int in[2];
        int out[2];
        EXPECT_EQ(pipe(in), 0);
        EXPECT_EQ(pipe(out), 0);
        mToServer = in[1];
        mFromServer = out[0];
        mReader = std::make_unique<MessageStream>(mFromServer);
        const auto serve = [in, out, options] {
            const int status = LspServer(in[0], out[1], options).run();
            close(in[0]);
            close(out[1]);
            return status;
        };
        if (!apart) {
            mServer = std::thread([this, serve] { mStatus = serve(); });
            return 0;
        }
        const pid_t server = fork();
        if (server == 0) {
            close(in[1]);
            close(out[0]);
            _exit(serve());
        }
        close(in[0]);
        close(out[1]);
        return server;
    }

    // The server's exit status once its input has ended.
    int finish() {
        if (mToServer >= 0) {
            close(mToServer);
            mToServer = -1;
        }
        if (mServer.joinable()) {
            mServer.join();
        }
        if (mFromServer >= 0) {
            close(mFromServer);
            mFromServer = -1;
        }
        return mStatus;
    }

    void write(const std::string& bytes) {
        ASSERT_EQ(::write(mToServer, bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }
    void send(const Json& message) { write(framed(message.dump())); }

    // The server's next message, or null when none comes within a minute.
    Json next() {
        std::string body;
        while (true) {
            MessageStream::Next got = mReader->next(&body);
            if (got == MessageStream::Next::kMessage) {
                return Json::parse(body);
            }
            pollfd fd{mFromServer, POLLIN, 0};
            if (got == MessageStream::Next::kBadFrame || poll(&fd, 1, 60000) <= 0 ||
                !mReader->fill()) {
                return nullptr;
            }
        }
    }
    // The next message that satisfies wanted; the others are kept in passed.
    Json nextWhere(const std::function<bool(const Json&)>& wanted) {
        for (Json message = next(); !message.is_null(); message = next()) {
            if (wanted(message)) {
                return message;
            }
            mPassed.push_back(message);
        }
        return nullptr;
    }
    Json answerTo(int id) {
        return nextWhere([id](const Json& m) { return m.value("id", Json()) == id; });
    }
    Json published() {
        return nextWhere([](const Json& m) {
            return m.value("method", "") == "textDocument/publishDiagnostics";
        });
    }
    void initialize() {
        send(request(1, "initialize"));
        ASSERT_TRUE(answerTo(1).contains("result"));
        send(notification("initialized", Json::object()));
    }

    std::string mFolder;
    std::thread mServer;
    std::unique_ptr<MessageStream> mReader;
    int mToServer = -1;
    int mFromServer = -1;
    int mStatus = -1;
    std::vector<Json> mPassed;
};

TEST_F(LspServerTest, EachMalformedInputGetsItsErrorAndTheNextMessageIsAnswered) {
    const struct {
        const char* what;
        std::string bytes;
        int code;  // 0: no answer at all
    } kCases[] = {
        {"length not a number", "Content-Length: abc\r\n\r\n{}", -32700},
        {"no length", "Content-Type: application/json\r\n\r\n", -32700},
        {"length past the bound", "Content-Length: 99999999999\r\n\r\n", -32700},
        {"header without an end", std::string(MessageStream::kMaxHeader + 10, 'x'), -32700},
        {"body not JSON", framed("{\"id\": 1,"), -32700},
        {"nested too deep for the stack",
         // A member after the deep one moves it, which copies it recursively.
         framed("{\"id\": " + std::string(1000000, '[') + std::string(1000000, ']') +
                ", \"method\": \"x\"}"),
         -32700},
        {"neither method nor id", framed(R"({"jsonrpc": "2.0"})"), -32600},
        {"not an object", framed("[1, 2]"), -32600},
        {"id of a wrong type", framed(R"({"jsonrpc": "2.0", "id": [1], "method": "x"})"), -32600},
        {"unknown request", framed(request(7, "no/such").dump()), -32601},
        {"wrong parameters", framed(request(8, "textDocument/hover", {{"textDocument", 3}}).dump()),
         -32602},
        {"unknown notification", framed(notification("no/such", {}).dump()), 0},
        {"cancellation", framed(notification("$/cancelRequest", {{"id", 1}}).dump()), 0},
        {"response to nothing", framed(R"({"jsonrpc": "2.0", "id": 4, "result": null})"), 0},
    };
    start(kWithoutAnalyses);
    initialize();
    int id = 100;
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.what);
        write(c.bytes);
        send(request(++id, "textDocument/documentSymbol", {{"textDocument", {{"uri", kUri}}}}));
        const Json first = next();
        if (c.code != 0) {
            EXPECT_EQ(first["error"]["code"], c.code);
            EXPECT_EQ(first.value("id", Json()), c.code == -32601   ? Json(7)
                                                 : c.code == -32602 ? Json(8)
                                                                    : Json());
        }
        const Json answer = c.code != 0 ? next() : first;
        EXPECT_EQ(answer["id"], id);
        EXPECT_EQ(answer["result"], Json::array());
    }
}

TEST_F(LspServerTest, AMessageThatArrivesInPiecesIsReadWhole) {
    start(kWithoutAnalyses);
    const std::string message = framed(request(1, "initialize").dump());
    for (size_t at = 0; at < message.size(); at += 7) {
        write(message.substr(at, 7));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    const Json answer = answerTo(1);
    EXPECT_EQ(answer["result"]["capabilities"]["textDocumentSync"]["change"], 1);
    EXPECT_EQ(answer["result"]["capabilities"]["completionProvider"]["triggerCharacters"],
              Json({"<", " ", "\""}));
}

TEST_F(LspServerTest, LifecycleAndExitStatus) {
    const struct {
        const char* what;
        std::vector<Json> messages;
        std::vector<int> codes;  // each request's error code, 0 for a result
        int status;
    } kCases[] = {
        // clang-format off
        {"exit after shutdown",
         {request(1, "initialize"), request(2, "shutdown"), notification("exit", {})}, {0, 0}, 0},
        {"exit without shutdown", {request(1, "initialize"), notification("exit", {})}, {0}, 1},
        {"input ends after shutdown", {request(1, "initialize"), request(2, "shutdown")}, {0, 0}, 0},
        {"input ends without shutdown", {request(1, "initialize")}, {0}, 1},
        {"requests before initialize and after shutdown",
         {request(1, "shutdown"), request(2, "initialize"), request(3, "shutdown"),
          request(4, "textDocument/documentSymbol", {{"textDocument", {{"uri", kUri}}}}),
          notification("exit", {})}, {-32002, 0, 0, -32600}, 0},
        // clang-format on
    };
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.what);
        start(kWithoutAnalyses);
        for (const Json& message : c.messages) {
            send(message);
        }
        for (size_t i = 0; i < c.codes.size(); i++) {
            const Json answer = next();
            EXPECT_EQ(answer["id"], i + 1);
            EXPECT_EQ(answer.contains("result"), c.codes[i] == 0) << answer.dump();
            EXPECT_EQ(answer.contains("error") ? answer["error"]["code"].get<int>() : 0, c.codes[i]);
        }
        EXPECT_EQ(finish(), c.status);
    }
}

TEST_F(LspServerTest, DiagnosticsMarkTheCauseAndCarryItsNotesAndEffect) {
    start();
    initialize();
    send(opened(kMisspelt, 3));
    const Json publish = published();
    ASSERT_FALSE(publish.is_null());
    EXPECT_EQ(publish["params"]["version"], 3);
    const Json misspelt = diagnosticNaming(publish, "vaule");
    ASSERT_FALSE(misspelt.is_null()) << publish.dump();
    EXPECT_EQ(misspelt["source"], "spatializer-paramtool");
    EXPECT_EQ(misspelt["severity"], 2);
    EXPECT_EQ(misspelt["code"], "text-read");
    // After 16 blanks, `<!--𝄞-->` is 9 UTF-16 units in 11 bytes; the attribute and its value are
    // 9 units.
    const int column = 16 + 9 + std::string("<dialog-enhancer-amount ").size();
    EXPECT_EQ(misspelt["range"], lineRange(kMisspeltLine, column, column + 9));
    std::string related;
    for (const Json& information : misspelt["relatedInformation"]) {
        EXPECT_EQ(information["location"]["uri"], kUri);
        related += information["message"].get<std::string>() + "\n";
    }
    EXPECT_NE(related.find("note: <dialog-enhancer-amount> has no \"value\""), std::string::npos)
        << related;
    // The measured effect: the amount reaches the speaker's dea entry only when it is read.
    EXPECT_NE(related.find("dea"), std::string::npos) << related;
    // Its quick fix: undone, the misspelt attribute is the one the element reads.
    std::string undone = kMisspelt;
    undone.replace(undone.find("vaule"), 5, "value");
    const Json range = lineRange(kMisspeltLine, 50, 51);
    send(request(
        2, "textDocument/codeAction",
        {{"textDocument", {{"uri", kUri}}}, {"range", range}, {"context", Json::object()}}));
    const Json actions = answerTo(2)["result"];
    ASSERT_EQ(actions.size(), 1u) << actions.dump();
    EXPECT_EQ(actions[0]["kind"], "quickfix");
    const std::string title = actions[0]["title"];
    EXPECT_EQ(title.rfind("Rename attribute \"vaule\"", 0), 0u) << title;
    EXPECT_NE(title.find(" → "), std::string::npos) << title;
    const Json edits = actions[0]["edit"]["changes"][kUri];
    ASSERT_EQ(edits.size(), 1u);
    const LspText lines(kMisspelt);
    const auto offset = [&lines](const Json& position) {
        return lines.offset(position["line"], position["character"]);
    };
    const size_t begin = offset(edits[0]["range"]["start"]);
    std::string text = kMisspelt;
    text.replace(begin, offset(edits[0]["range"]["end"]) - begin, edits[0]["newText"]);
    EXPECT_EQ(text, undone);
    // Far from the cause, no action.
    send(request(3, "textDocument/codeAction",
                 {{"textDocument", {{"uri", kUri}}}, {"range", lineRange(0, 0, 1)}}));
    EXPECT_EQ(answerTo(3)["result"], Json::array());
    // The tag spread over two lines, the attribute on either: found on its own line.
    int version = 3;
    for (const auto& [from, to, range] :
         {std::tuple{" vaule", "\n                vaule", lineRange(kMisspeltLine + 1, 16, 25)},
          std::tuple{"\"4\"/>", "\"4\"\n/>", lineRange(kMisspeltLine, column, column + 9)}}) {
        std::string split = kMisspelt;
        split.replace(split.find(from), strlen(from), to);
        send(changed(split, ++version));
        const Json moved = diagnosticNaming(published(), "vaule")["range"];
        EXPECT_EQ(moved, range) << to;
    }
    // A text that does not parse: one error, at libxml2's line.
    send(changed("<?xml version=\"1.0\"?>\n<kvx_spatializer_tuning>\n  <profile\n", ++version));
    const Json diagnostics = published()["params"]["diagnostics"];
    ASSERT_EQ(diagnostics.size(), 1u) << diagnostics.dump();
    EXPECT_EQ(diagnostics[0]["severity"], 1);
    EXPECT_GE(diagnostics[0]["range"]["start"]["line"].get<int>(), 2);
    EXPECT_NE(diagnostics[0]["message"].get<std::string>().find("not a readable XML document"),
              std::string::npos);
}

TEST_F(LspServerTest, ANewerChangeEndsTheOlderAnalysisAndOnlyItIsPublished) {
    start();
    initialize();
    std::string clean = kMisspelt;
    clean.replace(clean.find("vaule"), 5, "value");
    // Both in one write: the server reads the change before the first analysis can end.
    write(framed(opened(clean, 1).dump()) + framed(changed(kMisspelt, 2).dump()));
    const Json publish = published();
    EXPECT_EQ(publish["params"]["version"], 2);
    EXPECT_NE(publish.dump().find("vaule"), std::string::npos);
    // Given time, an analysis of version 1 that was left running would publish by now.
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    send(request(2, "shutdown"));
    EXPECT_FALSE(answerTo(2).is_null());
    for (const Json& passed : mPassed) {
        EXPECT_NE(passed.value("method", ""), "textDocument/publishDiagnostics") << passed.dump();
    }
}

TEST_F(LspServerTest, ClosingPublishesNothingAndPositionsOutsideTheTextAreAnsweredEmpty) {
    start(kWithoutAnalyses);
    initialize();
    send(opened("<a>\n</a>\n"));
    EXPECT_EQ(published()["params"]["diagnostics"], Json::array());
    const struct {
        const char* method;
        int line;
        int character;
        Json empty;
    } kCases[] = {
        {"textDocument/hover", 0, 4, nullptr},
        {"textDocument/hover", 5, 0, nullptr},
        {"textDocument/hover", -1, 0, nullptr},
        {"textDocument/completion", 1, 9, Json::array()},
    };
    int id = 10;
    for (const auto& c : kCases) {
        send(request(++id, c.method,
                     {{"textDocument", {{"uri", kUri}}},
                      {"position", {{"line", c.line}, {"character", c.character}}}}));
        const Json answer = answerTo(id);
        EXPECT_TRUE(answer.contains("result")) << answer.dump();
        EXPECT_EQ(answer["result"], c.empty) << c.method << " " << c.line << ":" << c.character;
    }
    send(notification("textDocument/didClose", {{"textDocument", {{"uri", kUri}}}}));
    const Json closed = published();
    EXPECT_EQ(closed["params"]["uri"], kUri);
    EXPECT_EQ(closed["params"]["diagnostics"], Json::array());
}

TEST_F(LspServerTest, ExitingWhileAnAnalysisRunsLeavesNoFileBehind) {
    // The example, large enough that its analysis is still running when exit arrives; TearDown
    // checks the folder.
    const std::string example = test::fileText(test::exampleFile());
    ASSERT_FALSE(example.empty());
    start();
    initialize();
    write(framed(opened(example).dump()) + framed(request(2, "shutdown").dump()) +
          framed(notification("exit", {}).dump()));
    EXPECT_EQ(finish(), 0);
}

TEST_F(LspServerTest, ASigtermWhileAnalysingLeavesNoFileBehind) {
    // A hundred misspelt profiles: a hundred effects to measure keep the analysis busy.
    std::string text = kMisspelt.substr(0, kMisspelt.find("    <profile"));
    const std::string profile = kMisspelt.substr(text.size(), kMisspelt.find("</kvx") - text.size());
    for (int id = 0; id < 100; id++) {
        text += std::regex_replace(profile, std::regex("id=\"0\""),
                                   "id=\"" + std::to_string(id) + "\"");
    }
    text += "</kvx_spatializer_tuning>\n";
    const pid_t server = start(LspServer::Options(), true);
    initialize();
    send(opened(text));
    bool analysing = false;
    for (int i = 0; i < 5000 && !analysing; i++) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        for (const std::string& name : filesIn(mFolder)) {
            analysing = analysing || name.rfind("paramtool-lsp", 0) == 0;
        }
    }
    ASSERT_TRUE(analysing);
    kill(server, SIGTERM);
    int status = 0;
    ASSERT_EQ(waitpid(server, &status, 0), server);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
    // TearDown checks that the analysis ended and removed its files.
}

TEST(LspTextTest, PositionsCountUtf16UnitsWithinLines) {
    const std::string text = "ab\r\nü𝄞x\n\nend";
    const LspText lines(text);
    // Each offset and its position, both ways where the position maps back to the offset.
    const struct {
        size_t offset;
        int line;
        int character;
        bool back;
    } kCases[] = {
        {0, 0, 0, true},  {2, 0, 2, true},  {4, 1, 0, true},  {6, 1, 1, true},   {10, 1, 3, true},
        {11, 1, 4, true}, {12, 2, 0, true}, {16, 3, 3, true}, {99, 3, 3, false},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(lines.position(c.offset), Json({{"line", c.line}, {"character", c.character}}))
            << c.offset;
        EXPECT_EQ(lines.offset(c.line, c.character) == c.offset, c.back) << c.offset;
    }
    // Inside 𝄞's surrogate pair: past it; past a line's end: at its end, before its "\r".
    EXPECT_EQ(lines.offset(1, 2), 10u);
    EXPECT_EQ(lines.offset(0, 9), 2u);
    for (const auto& [line, character] : {std::pair{4, 0}, {-1, 0}, {0, -1}}) {
        EXPECT_EQ(lines.offset(line, character), std::string::npos) << line << ":" << character;
    }
    EXPECT_EQ(lines.line(0), "ab");
    EXPECT_TRUE(lines.contains(1, 4));
    EXPECT_FALSE(lines.contains(1, 5));
    EXPECT_TRUE(lines.contains(3, 3));
    EXPECT_FALSE(lines.contains(4, 0));
}

TEST(LspTextTest, TheSmallestEditSpansOnlyWhatDiffersAndKeepsCharactersWhole) {
    const struct {
        const char* text;
        const char* edited;
        int startCharacter;
        int endCharacter;
        const char* newText;
    } kCases[] = {
        {"<a vaule=\"4\"/>", "<a value=\"4\"/>", 5, 7, "lu"},
        {"<a/>", "<a/>", 4, 4, ""},
        {"<a x=\"1\"/>", "<a/>", 2, 8, ""},
        // é and è share their first byte: the edit takes the whole character.
        {"<a n=\"é\"/>", "<a n=\"è\"/>", 6, 7, "è"},
        {"xx", "xxxx", 2, 2, "xx"},
    };
    for (const auto& c : kCases) {
        const Json edit = DocumentAnalysis::smallestEdit(c.text, c.edited);
        EXPECT_EQ(edit["range"]["start"]["character"], c.startCharacter) << c.text;
        EXPECT_EQ(edit["range"]["end"]["character"], c.endCharacter) << c.text;
        EXPECT_EQ(edit["newText"], c.newText) << c.text;
    }
}

}  // namespace
}  // namespace korva::tool
