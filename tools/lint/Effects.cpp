#include "tools/lint/Effects.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "tools/commands/DiffCommand.h"
#include "tools/lint/LintRules.h"
#include "tools/lint/UndoEdit.h"
#include "tools/load/LoadedFile.h"
#include "tools/load/TemporaryPaths.h"

namespace korva::tool {

namespace {

// Undone copies load on both cores at once.
constexpr size_t kServers = 2;

// The file's blobs' words by key, written by check's process once it has loaded the file and read
// by each load of an undone copy, whose process forks after the file is made: a load sends back in
// full only the blobs that differ from the file's.
FILE* sReference = nullptr;

// What a load of an undone copy hands back: the blobs and store state of diff's documents (a blob
// alike in the file only by its identity, "same": true) and the messages of the copy's own findings.
int loadWork(const std::string& path, Json* document) {
    std::unique_ptr<StoreSession> session = StoreSession::open(path);
    if (session == nullptr || !session->readable()) {
        return kExitError;
    }
    std::vector<uint8_t> bytes(static_cast<size_t>(lseek(fileno(sReference), 0, SEEK_END)));
    const bool read = pread(fileno(sReference), bytes.data(), bytes.size(), 0) ==
                      static_cast<ssize_t>(bytes.size());
    const auto reference = read ? Json::from_cbor(bytes, true, false) : Json();
    *document = LoadedFile::of(*session, [&reference](const std::string& key,
                                                      const std::vector<int>& words) {
                    const auto found = reference.find(key);
                    return found != reference.end() && *found == Json(words);
                }).toJson(true);
    Json& messages = (*document)["findings"] = Json::array();
    for (const Finding& finding : LintRules::run(session->report())) {
        messages.push_back(finding.message);
    }
    return kExitOk;
}

// A server of undone copies, forked before check's own load: each text it is sent loads in a
// private temporary file, in a process forked for that load alone, and is removed right after.
int serve(size_t, int parent) {
    // An interrupt of the tool stops this process only between loads, once its private file is
    // removed: the closed socket ends the loop.
    for (int stop : {SIGINT, SIGTERM, SIGPIPE}) {
        signal(stop, SIG_IGN);
    }
    // What goes wrong is said by the answer; the loads' own messages name private files.
    const int quiet = open("/dev/null", O_WRONLY);
    dup2(quiet, STDERR_FILENO);
    close(quiet);
    const std::string name = TemporaryPaths::pattern("paramtool-undone");
    std::string text;
    while (ChildLoads::receive(parent, &text)) {
        std::string path = name;
        const int fd = mkstemp(path.data());
        const bool written =
            fd >= 0 && write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
        close(fd);
        const auto load = [&path](Json* document) { return loadWork(path, document); };
        const Json undone = written ? ChildLoads::one(path, load) : Json();
        unlink(path.c_str());
        if (!ChildLoads::send(parent, undone)) {
            break;
        }
    }
    return kExitOk;
}

// What the load of an undone copy (null when it failed) changes against the file, as effect, and
// which of the file's findings the copy no longer has; none when it could not be loaded.
std::vector<bool> compareUndone(const LoadedFile& file, const std::vector<Finding>& findings,
                                const Json& undone, std::optional<Differences>* effect,
                                std::string* why) {
    std::vector<bool> clears;
    if (!undone.contains("blobs")) {
        *why = "the undone copy could not be loaded";
        return clears;
    }
    // The blobs both have alike came back by their identity only, which compare passes over.
    *effect = DiffCommand::compare(LoadedFile::fromJson(undone), file);
    // Counted by message: the copy's lines have moved.
    std::map<std::string, int> left;
    for (const Json& message : undone.value("findings", Json::array())) {
        left[message.get<std::string>()]++;
    }
    for (const Finding& finding : findings) {
        clears.push_back(left[finding.message]-- <= 0);
    }
    return clears;
}

}  // namespace

std::unique_ptr<ChildLoads> Effects::start() {
    sReference = sReference != nullptr ? sReference : tmpfile();
    return sReference != nullptr ? ChildLoads::start(std::vector<std::string>(kServers), serve)
                                 : nullptr;
}

void Effects::skip(std::vector<Finding>* findings) {
    findings->erase(std::remove_if(findings->begin(), findings->end(),
                                   [](const Finding& f) { return f.onlyIfEffect; }),
                    findings->end());
}

void Effects::measure(const StoreSession& session, ChildLoads& loads, bool verbose,
                      std::vector<Finding>* findings, void (*progress)(size_t, size_t)) {
    const LoadReport& report = session.report();
    Json reference = Json::object();
    const LoadedFile file = LoadedFile::of(
        session, [&reference](const std::string& key, const std::vector<int>& words) {
            reference[key] = words;
            return false;
        });
    // Not written in full, it is not read, and the loads send every blob back: slower, as exact.
    const std::vector<uint8_t> bytes = Json::to_cbor(reference);
    [[maybe_unused]] const ssize_t written =
        pwrite(fileno(sReference), bytes.data(), bytes.size(), 0);
    std::vector<Finding>& all = *findings;
    // Which findings each cause's undone copy no longer has.
    std::vector<std::vector<bool>> clears(all.size());
    std::string why;

    // The comments and texts that only an effect would make findings, undone all at once first:
    // in most files together they change nothing, and one load says so.
    std::vector<Undo> quiet;
    for (const Finding& finding : all) {
        if (finding.onlyIfEffect && finding.undo) {
            quiet.push_back(*finding.undo);
        }
    }
    bool quietMatter = false;
    if (!quiet.empty()) {
        std::string text;
        std::optional<Differences> effect;
        const std::vector<bool> together =
            UndoEdit::apply(report, quiet, &text, &why)
                ? compareUndone(file, all, loads.ask({text}).front(), &effect, &why)
                : std::vector<bool>();
        quietMatter = !effect || !effect->empty();
        for (size_t i = 0; i < together.size(); i++) {
            quietMatter = quietMatter || (together[i] && !all[i].onlyIfEffect);
        }
    }
    const auto measurable = [&](const Finding& f) {
        return f.undo && (!f.onlyIfEffect || quietMatter);
    };
    size_t toDo = std::count_if(all.begin(), all.end(), measurable);
    size_t done = 0;
    // A finding that a cause on an earlier line clears is that cause's consequence whatever its
    // own undo changes, so it is not measured. The findings are in line order: the next causes not
    // cleared yet load at once, one per server, and one that a cause ahead of it in the batch
    // clears is dropped unread, so the findings come out as they would one load at a time.
    std::vector<bool> cleared(all.size(), false);
    for (size_t next = 0; next < all.size();) {
        std::vector<size_t> batch;
        std::vector<std::string> texts;
        std::vector<std::string> unmade;
        for (; next < all.size() && batch.size() < kServers; next++) {
            if (measurable(all[next]) && cleared[next]) {
                toDo--;
            } else if (measurable(all[next])) {
                batch.push_back(next);
                texts.emplace_back();
                unmade.emplace_back();
                UndoEdit::apply(report, {*all[next].undo}, &texts.back(), &unmade.back());
            }
        }
        const std::vector<Json> documents = loads.ask(texts);
        for (size_t k = 0; k < batch.size(); k++) {
            const size_t i = batch[k];
            if (cleared[i]) {
                toDo--;
                continue;
            }
            if (progress != nullptr) {
                progress(done++, toDo);
            }
            why = unmade[k];
            if (why.empty()) {
                clears[i] = compareUndone(file, all, documents[k], &all[i].effect, &why);
            }
            all[i].unmeasured = all[i].effect ? "" : why;
            for (size_t f = i + 1; f < clears[i].size(); f++) {
                cleared[f] = cleared[f] || (clears[i][f] && all[f].at.line > all[i].at.line);
            }
        }
    }
    if (progress != nullptr) {
        progress(toDo, toDo);
    }

    // A finding that undoing another cause clears follows from that cause. Where two clear each
    // other, the one on the earlier line (the earlier one on a line) is the cause.
    const auto clearsOf = [&](size_t c, size_t f) {
        return c != f && !clears[c].empty() && clears[c][f];
    };
    std::vector<int> causeOf(all.size(), -1);
    for (size_t f = 0; f < all.size(); f++) {
        for (size_t c = 0; c < all.size() && causeOf[f] < 0; c++) {
            // In line order, the earlier is the one on the earlier line.
            if (clearsOf(c, f) && (!clearsOf(f, c) || c < f)) {
                causeOf[f] = static_cast<int>(c);
            }
        }
    }
    for (size_t f = 0; f < all.size(); f++) {
        int cause = causeOf[f];
        // The cause of a cause, for chains.
        for (int hops = 0; cause >= 0 && causeOf[cause] >= 0 && hops < 64; hops++) {
            cause = causeOf[cause];
        }
        if (cause >= 0 && cause != static_cast<int>(f)) {
            all[cause].follows.push_back({all[f].at, all[f].message});
        }
    }
    std::vector<Finding> kept;
    for (size_t f = 0; f < all.size(); f++) {
        // A cause that changes and clears nothing: a comment or text always goes, a warning
        // unless verbose.
        const Finding& finding = all[f];
        const bool idle = finding.follows.empty() &&
                          (finding.effect ? finding.effect->empty() : finding.onlyIfEffect);
        if (causeOf[f] < 0 && !(idle && (finding.onlyIfEffect ||
                                         (finding.severity != Severity::kError && !verbose)))) {
            kept.push_back(std::move(all[f]));
        }
    }
    all = std::move(kept);
}

}  // namespace korva::tool
