// Saved progress: the player's newest progress document, the save of a next version over the one it was
// based on, and the list of the kept versions. Only the player himself reads or writes his.
#include "net/api_support.h"

#include "logic/progress_rules.h"

namespace tarvolin::net {

using namespace detail;
namespace rules = logic::progress;

namespace {

json::object versionJson(const store::ProgressVersion& v) {
    json::object o{{"version", v.version}, {"savedAt", v.savedAt}, {"level", v.level}, {"gold", v.gold}};
    if (!v.document.empty()) {
        json::error_code ec;
        json::value doc = json::parse(v.document, ec);
        o["progress"] = ec ? json::value(nullptr) : std::move(doc);
    }
    return o;
}

} // namespace

void Api::addProgressRoutes() {
    add("GET", "/v1/progress", &Api::loadProgress, true);
    add("PUT", "/v1/progress", &Api::saveProgress, true);
    add("GET", "/v1/progress/versions", &Api::progressVersions, true);
}

Response Api::loadProgress(Ctx& c) {
    std::optional<store::ProgressVersion> newest = store_.progress(c.playerId);
    if (!newest) {
        throw ApiError(404, "no_progress", "no progress of yours has been saved");
    }
    return jsonResponse(200, versionJson(*newest));
}

Response Api::saveProgress(Ctx& c) {
    const json::object body = parseBody(c.req.body);
    const std::optional<std::int64_t> base = optionalInt64(body, "baseVersion");
    if (!base || *base < 0) {
        throw ApiError(400, "invalid_field",
                       "\"baseVersion\" must be the version the progress is based on, 0 for none");
    }
    const json::value* progress = body.if_contains("progress");
    if (!progress) {
        throw ApiError(400, "missing_field", "\"progress\" is required");
    }
    const std::string document = json::serialize(*progress);
    if (document.size() > rules::kMaxDocumentBytes) {
        throw ApiError(400, "progress_too_large",
                       "the progress document is larger than " + std::to_string(rules::kMaxDocumentBytes) +
                           " bytes");
    }
    auto read = rules::readDocument(document);
    if (const auto* error = std::get_if<rules::DocumentError>(&read)) {
        throw ApiError(400, "invalid_progress", error->message);
    }
    store::ProgressSaveResult r =
        store_.saveProgress(c.playerId, *base, std::get<rules::Summary>(read), document, clock_());
    if (const auto* conflict = std::get_if<store::ProgressConflict>(&r)) {
        json::object error{{"code", "progress_conflict"},
                           {"message", "the progress was saved meanwhile as version " +
                                           std::to_string(conflict->newest.version) +
                                           "; base the save on it"}};
        json::object answer{{"error", std::move(error)}};
        answer["newest"] =
            conflict->newest.version == 0 ? json::value(nullptr) : versionJson(conflict->newest);
        return jsonResponse(409, answer);
    }
    if (const auto* refused = std::get_if<store::GoldNotEarned>(&r)) {
        return jsonResponse(
            422,
            json::object{{"error", json::object{{"code", "gold_not_earned"},
                                                {"message", "the gold rose more than the game pays since "
                                                            "the last save: at most " +
                                                                std::to_string(refused->allowed)},
                                                {"allowedGold", refused->allowed}}}});
    }
    const store::ProgressVersion& saved = std::get<store::ProgressVersion>(r);
    return jsonResponse(200, json::object{{"version", saved.version}, {"savedAt", saved.savedAt}});
}

Response Api::progressVersions(Ctx& c) {
    json::array versions;
    for (const store::ProgressVersion& v : store_.progressVersions(c.playerId)) {
        versions.push_back(versionJson(v));
    }
    return jsonResponse(200, json::object{{"versions", std::move(versions)}});
}

} // namespace tarvolin::net
