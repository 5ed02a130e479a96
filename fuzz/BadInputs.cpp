// Runs the hand-picked bad inputs through the library, each in a child process of its own (a
// fresh store, and a crash stays countable), and prints a Markdown table of what the library did
// with each: what it loaded or accepted, the error lines it logged, the wall time and the child's
// peak memory, and whether the child ended normally.
//
//   fuzz_bad_inputs WORK_DIR EXAMPLE_TUNING_FILE
//
// WORK_DIR receives the generated files. Built beside the fuzzers, so a sanitizer report in a
// child shows as an abnormal end.

#include <android/log.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "engine/EffectParamParser.h"
#include "fuzz/StoreSnapshot.h"
#include "model/OutputDevice.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamParser.h"
#include "tests/support/SpatializerParamArrayTestPeer.h"
#include "translator/VexParameter.h"

namespace {

using korva::SpatializerParamArray;
using korva::SpatializerParamArrayTestPeer;

// A case that runs longer than this is stopped and reported as such.
constexpr int kCaseTimeLimitSeconds = 30;

std::vector<std::string> sErrorLines;
size_t sErrorCount = 0;

void keepErrors(const struct __android_logger_data* data, const char* message) {
    if (data->priority < ANDROID_LOG_ERROR) {
        return;
    }
    sErrorCount++;
    if (sErrorLines.size() < 1000) {
        sErrorLines.push_back(message != nullptr ? message : "");
    }
}

// The distinct error lines, each with how often it came.
std::string errorSummary() {
    if (sErrorLines.empty()) {
        return "no error line";
    }
    std::map<std::string, int> counts;
    std::vector<std::string> order;
    for (const std::string& line : sErrorLines) {
        if (counts[line]++ == 0) {
            order.push_back(line);
        }
    }
    std::string out;
    for (size_t i = 0; i < order.size() && i < 3; i++) {
        std::string line = order[i].size() > 90 ? order[i].substr(0, 87) + "..." : order[i];
        out += (i == 0 ? "" : "; ") + std::string("\"") + line + "\"";
        if (counts[order[i]] > 1) {
            out += " x" + std::to_string(counts[order[i]]);
        }
    }
    if (order.size() > 3) {
        out += "; +" + std::to_string(order.size() - 3) + " more";
    }
    return out;
}

std::string loadResult() {
    SpatializerParamArrayTestPeer peer(SpatializerParamArray::getInstance());
    std::ostringstream out;
    out << peer.xmlProfileParams().size() << " profile blobs, " << peer.xmlTuningParams().size()
        << " tuning blobs, tuning count " << peer.xmlTuningCount() << "; " << errorSummary();
    return out.str();
}

// Constructing the store already tries the device's fixed paths, which the host lacks: only
// what the load of the case logs is reported.
SpatializerParamArray& constructedStore() {
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    sErrorLines.clear();
    return store;
}

std::string load(const std::string& path) {
    constructedStore().loadSpatializerXMLFile(path);
    return loadResult();
}

std::string blobResult(std::vector<int32_t> words) {
    int bytes = static_cast<int>(words.size() * sizeof(int32_t));
    korva::SpatializerParamParser store(words.data(), bytes);
    bool storeValid = store.validate();
    int storeEntries = store.mParamIndex;
    EffectParamParser engine(words.data(), bytes);
    bool engineValid = engine.validate();
    std::ostringstream out;
    out << "store reader: " << (storeValid ? "valid" : "invalid") << " after " << storeEntries
        << " entries; engine reader: " << (engineValid ? "valid" : "invalid") << "; "
        << errorSummary();
    return out.str();
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

// A minimal valid document around the given profile contents; the reader steps over each
// element's first child node, so every element starts on a line of its own.
std::string tuningDocument(const std::string& body) {
    return "<?xml version=\"1.0\"?>\n<kvx_spatializer_tuning>\n"
           "    <format_version major=\"3\" minor=\"4\" maintenance=\"0\"/>\n" +
           body + "</kvx_spatializer_tuning>\n";
}

std::string profileElement(int id, const std::string& data) {
    return "    <profile id=\"" + std::to_string(id) + "\" name=\"p" + std::to_string(id) +
           "\">\n        <data>\n" + data +
           "            <endpoint_type id=\"speaker\">\n"
           "                <include ieq_preset=\"0\"/>\n"
           "                <volume-leveler-enable value=\"true\"/>\n"
           "            </endpoint_type>\n        </data>\n    </profile>\n";
}

struct Case {
    std::string name;
    std::function<std::string()> run;
};

struct Outcome {
    std::string result;
    double seconds;
    long peakKib;
    std::string end;
};

Outcome runInChild(const Case& c) {
    int fds[2];
    if (pipe(fds) != 0) {
        perror("pipe");
        exit(1);
    }
    auto start = std::chrono::steady_clock::now();
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        alarm(kCaseTimeLimitSeconds);
        __android_log_set_logger(keepErrors);
        __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
        std::string result = c.run();
        ssize_t written = write(fds[1], result.data(), result.size());
        close(fds[1]);
        _exit(written == static_cast<ssize_t>(result.size()) ? 0 : 3);
    }
    close(fds[1]);
    std::string result;
    char buffer[4096];
    ssize_t n;
    while ((n = read(fds[0], buffer, sizeof(buffer))) > 0) {
        result.append(buffer, n);
    }
    close(fds[0]);
    int status = 0;
    struct rusage usage = {};
    wait4(pid, &status, 0, &usage);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::string end = "normal";
    if (WIFSIGNALED(status)) {
        end = WTERMSIG(status) == SIGALRM
                  ? "did not finish in " + std::to_string(kCaseTimeLimitSeconds) + " s"
                  : "killed by signal " + std::to_string(WTERMSIG(status));
    } else if (WEXITSTATUS(status) != 0) {
        end = "exit status " + std::to_string(WEXITSTATUS(status)) + " (sanitizer report?)";
    }
    return {result.empty() ? "-" : result, seconds, usage.ru_maxrss, end};
}

std::string escapeCell(const std::string& text) {
    std::string out;
    for (char ch : text) {
        out += ch == '|' ? std::string("\\|") : std::string(1, ch);
    }
    return out;
}

// Loads while another thread swaps the file for other versions, renamed over it or rewritten
// in place, and counts what the loads made of it.
std::string loadWhileReplacing(const std::string& path, const std::string& example) {
    const std::string variants[] = {example, example.substr(0, example.size() / 2), "not xml", ""};
    writeFile(path, example);
    std::atomic<bool> stop{false};
    std::thread replacer([&] {
        std::string next = path + ".next";
        for (unsigned i = 0; !stop.load(); i++) {
            const std::string& text = variants[i % 4];
            if (i % 2 == 0) {
                // Atomic replacement, as a package update does it.
                writeFile(next, text);
                rename(next.c_str(), path.c_str());
            } else {
                // In place: truncated and rewritten under the reader.
                writeFile(path, text);
            }
            // Slower than a load of the whole example, so that loads meet whole files as well
            // as files that change under them.
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
        }
    });
    SpatializerParamArray& store = constructedStore();
    SpatializerParamArrayTestPeer peer(store);
    const korva::fuzz::StoreSnapshot initial(peer);
    std::map<std::string, int> outcomes;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(6);
    while (std::chrono::steady_clock::now() < end) {
        initial.restore(peer);
        size_t errorsBefore = sErrorCount;
        store.loadSpatializerXMLFile(path);
        std::string outcome = std::to_string(peer.xmlProfileParams().size()) + " profile blobs";
        if (sErrorCount > errorsBefore) {
            outcome += " with an error line";
        }
        outcomes[outcome]++;
    }
    stop = true;
    replacer.join();
    std::string out = "load outcomes:";
    for (const auto& [outcome, count] : outcomes) {
        out += " " + std::to_string(count) + "x " + outcome + ";";
    }
    return out;
}

std::vector<Case> tuningCases(const std::string& work, const std::string& example) {
    std::vector<Case> cases;
    const std::string exampleText = readFile(example);
    cases.push_back({"the example, whole (" + std::to_string(exampleText.size()) + " bytes)",
                     [example] { return load(example); }});
    for (int eighth = 1; eighth <= 7; eighth++) {
        std::string path = work + "/truncated-" + std::to_string(eighth) + "-of-8.xml";
        writeFile(path, exampleText.substr(0, exampleText.size() * eighth / 8));
        cases.push_back(
            {"the example cut at " + std::to_string(eighth) + "/8", [path] { return load(path); }});
    }

    std::string notXml = work + "/not-xml.xml";
    writeFile(notXml, std::string("profile id=1 movie\n\x01\x02\xff\xfe garbage\n", 32));
    cases.push_back({"not XML (text and binary bytes)", [notXml] { return load(notXml); }});

    std::string nested = work + "/nested-100000.xml";
    {
        std::string text = "<?xml version=\"1.0\"?>\n<root>\n";
        for (int i = 0; i < 100000; i++) text += "<a>";
        for (int i = 0; i < 100000; i++) text += "</a>";
        writeFile(nested, text + "\n</root>\n");
    }
    cases.push_back({"100 000 nested elements", [nested] { return load(nested); }});

    std::string nestedProfile = work + "/nested-in-profile.xml";
    {
        std::string data;
        for (int i = 0; i < 200; i++) data += "<data>\n";
        for (int i = 0; i < 200; i++) data += "</data>\n";
        writeFile(nestedProfile, tuningDocument(profileElement(1, data)));
    }
    cases.push_back({"200 nested elements inside a profile (below libxml2's depth limit)",
                     [nestedProfile] { return load(nestedProfile); }});

    std::string bigAttribute = work + "/attribute-1mb.xml";
    {
        std::string digits(1 << 20, '7');
        std::string list;
        while (list.size() < (1u << 20)) list += "12345,";
        writeFile(
            bigAttribute,
            tuningDocument(profileElement(
                1, "            <volume-leveler-amount value=\"" + digits + "\"/>\n" +
                       "            <complex-equalizer-tuning-left value=\"" + list + "\"/>\n")));
    }
    cases.push_back({"1 MB attributes (one number of 1 MB digits, one list of 1 MB)",
                     [bigAttribute] { return load(bigAttribute); }});

    std::string manyProfiles = work + "/profiles-10000.xml";
    {
        std::string body;
        for (int id = 0; id < 10000; id++) {
            body += profileElement(id, "            <volume-leveler-amount value=\"3\"/>\n");
        }
        writeFile(manyProfiles, tuningDocument(body));
    }
    cases.push_back({"10 000 profiles", [manyProfiles] { return load(manyProfiles); }});

    std::string directory = work + "/a-directory.xml";
    mkdir(directory.c_str(), 0755);
    cases.push_back({"a directory path", [directory] { return load(directory); }});

    cases.push_back(
        {"a path that does not exist", [work] { return load(work + "/no-such-file.xml"); }});

    std::string unreadable = work + "/unreadable.xml";
    writeFile(unreadable, exampleText);
    chmod(unreadable.c_str(), 0);
    cases.push_back({"an unreadable file (mode 000, read as an unprivileged user)", [unreadable] {
                         // Root reads any file; the store runs as an ordinary user on a device.
                         if (getuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
                             return std::string("could not drop privileges");
                         }
                         return load(unreadable);
                     }});

    cases.push_back(
        {"/proc/self/mem (open succeeds, read fails)", [] { return load("/proc/self/mem"); }});

    std::string replaced = work + "/replaced.xml";
    cases.push_back(
        {"a file replaced while being read (6 s of loads; renamed over or rewritten in place every "
         "150 ms)",
         [replaced, exampleText] { return loadWhileReplacing(replaced, exampleText); }});
    return cases;
}

std::vector<Case> blobCases() {
    const int32_t kAll = korva::kOutputDeviceAll;
    const int32_t kCode = korva::vexParameterCode("mdle");
    return {
        {"blob announcing INT_MAX entries, holding one",
         [=] {
             return blobResult({0, INT_MAX, kAll, kCode, 1, 5});
         }},
        {"blob entry announcing INT_MAX values",
         [=] {
             return blobResult({0, 1, kAll, kCode, INT_MAX, 5});
         }},
        {"blob entry announcing INT_MAX/4 + 1 values (bytes overflow 32 bits)",
         [=] {
             return blobResult({0, 1, kAll, kCode, INT_MAX / 4 + 1, 5});
         }},
        {"blob announcing -1 entries",
         [=] {
             return blobResult({0, -1, kAll, kCode, 1, 5});
         }},
        {"blob entry with -1 values",
         [=] {
             return blobResult({0, 1, kAll, kCode, -1, 5});
         }},
        {"blob entry with INT_MIN values",
         [=] {
             return blobResult({0, 1, kAll, kCode, INT_MIN, 5});
         }},
        {"blob: -3 values (steps back onto itself), 1000 entries announced",
         [=] {
             return blobResult({0, 1000, kAll, kCode, -3});
         }},
        {"blob: -3 values (steps back onto itself), INT_MAX entries announced",
         [=] {
             return blobResult({0, INT_MAX, kAll, kCode, -3});
         }},
    };
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: %s WORK_DIR EXAMPLE_TUNING_FILE\n", argv[0]);
        return 2;
    }
    std::string work = argv[1];
    mkdir(work.c_str(), 0755);
    chmod(work.c_str(), 0755);
    std::vector<Case> cases = tuningCases(work, argv[2]);
    for (Case& c : blobCases()) {
        cases.push_back(std::move(c));
    }

    printf("| input | what the library did | time (s) | peak RSS (MiB) | process end |\n");
    printf("|---|---|---|---|---|\n");
    int abnormal = 0;
    for (const Case& c : cases) {
        Outcome outcome = runInChild(c);
        // A case stopped at the time limit is reported, not failed: the table says how long.
        abnormal += outcome.end == "normal" || outcome.end.rfind("did not finish", 0) == 0 ? 0 : 1;
        printf("| %s | %s | %.2f | %.0f | %s |\n", escapeCell(c.name).c_str(),
               escapeCell(outcome.result).c_str(), outcome.seconds, outcome.peakKib / 1024.0,
               outcome.end.c_str());
        fflush(stdout);
    }
    return abnormal == 0 ? 0 : 1;
}
