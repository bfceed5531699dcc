#include <cstdio>

#include "benchmarks/json/Chance.h"
#include "benchmarks/json/documents.h"

namespace kestrav::benchmark {
namespace {

const char* const kSyllables[] = {"\xE3\x81\x82",
                                  "\xE3\x81\x84",
                                  "\xE3\x81\x86",
                                  "\xE3\x81\x88",
                                  "\xE3\x81\x8A",
                                  "\xE3\x81\x8B",
                                  "\xE3\x83\xAA",
                                  "\xE5\xBE\xA1",
                                  "\xE5\x89\x8D",
                                  "\xE3\x80\x81",
                                  "\xE7\x94\xB0",
                                  "\xE4\xB8\xAD",
                                  " ",
                                  "a",
                                  "RT ",
                                  "@",
                                  "2014",
                                  "#",
                                  "\\n",
                                  "\xE3\x80\x82"};
const char* const kTrueOrFalse[] = {"true", "false"};

std::string message(Chance& chance, std::size_t syllables) {
    std::string text;
    for (std::size_t at = 0; at < syllables; ++at)
        text += chance.oneOf(kSyllables);
    return text;
}

/// Writes members line by line, indented.
class Lines {
  public:
    Lines(std::string& text, std::size_t indentation) : text_(text), space_(indentation, ' ') {}

    void open(const std::string& key, char bracket) { begin(key) += bracket, first_ = true, space_ += "  "; }
    void close(char bracket) {
        space_.resize(space_.size() - 2);
        text_ += '\n' + space_ + bracket;
        first_ = false;
    }
    void put(const std::string& key, const std::string& value) { begin(key) += value; }

  private:
    std::string& begin(const std::string& key) {
        text_ += first_ ? "\n" : ",\n";
        text_ += space_;
        if (!key.empty()) text_ += quoted(key) + ": ";
        first_ = false;
        return text_;
    }

    std::string& text_;
    std::string space_;
    bool first_ = true;
};

void putUser(Lines& lines, Chance& chance) {
    lines.open("user", '{');
    const std::string id = std::to_string(1'000'000'000 + chance.below(2'000'000'000));
    lines.put("id", id);
    lines.put("id_str", quoted(id));
    lines.put("name", quoted(message(chance, 4)));
    lines.put("screen_name", quoted("ayuu" + std::to_string(chance.below(9999))));
    lines.put("location", quoted(message(chance, 3)));
    lines.put("description", quoted(message(chance, 30)));
    lines.put("url", "null");
    lines.open("entities", '{');
    lines.open("description", '{');
    lines.put("urls", "[]");
    lines.close('}');
    lines.close('}');
    for (const char* count : {"followers_count", "friends_count", "listed_count", "favourites_count", "statuses_count"})
        lines.put(count, std::to_string(chance.below(20'000)));
    lines.put("created_at", quoted("Sun Jun 02 11:57:02 +0000 2013"));
    lines.put("utc_offset", "null");
    lines.put("time_zone", "null");
    for (const char* flag : {"protected", "geo_enabled", "verified", "contributors_enabled", "is_translator",
                             "profile_background_tile", "default_profile", "following"})
        lines.put(flag, chance.oneOf(kTrueOrFalse));
    lines.put("lang", quoted("ja"));
    for (const char* colour : {"profile_background_color", "profile_link_color", "profile_text_color"})
        lines.put(colour, quoted("C0DEED"));
    for (const char* image : {"profile_background_image_url", "profile_image_url", "profile_image_url_https"})
        lines.put(image, quoted("http:\\/\\/pbs.example.com\\/profile_images\\/" + id + "\\/ayuu_normal.jpeg"));
    lines.close('}');
}

void putMessage(Lines& lines, Chance& chance) {
    lines.open("", '{');
    lines.open("metadata", '{');
    lines.put("result_type", quoted("recent"));
    lines.put("iso_language_code", quoted("ja"));
    lines.close('}');
    const std::string id = "505874" + std::to_string(100'000'000'000 + chance.below(899'999'999'999));
    lines.put("created_at", quoted("Sun Aug 31 00:29:15 +0000 2014"));
    lines.put("id", id);
    lines.put("id_str", quoted(id));
    lines.put("text", quoted(message(chance, 60)));
    lines.put("source", quoted(R"(<a href=\"https:\/\/mobile.example.com\" rel=\"nofollow\">Mobile<\/a>)"));
    lines.put("truncated", "false");
    for (const char* none : {"in_reply_to_status_id", "in_reply_to_user_id", "geo", "coordinates", "place"})
        lines.put(none, "null");
    putUser(lines, chance);
    lines.put("retweet_count", std::to_string(chance.below(50)));
    lines.put("favorite_count", "0");
    lines.open("entities", '{');
    for (const char* list : {"hashtags", "symbols", "urls"})
        lines.put(list, "[]");
    lines.open("user_mentions", '[');
    lines.open("", '{');
    lines.put("screen_name", quoted("aym" + std::to_string(chance.below(999))));
    lines.put("indices", "[" + std::to_string(chance.below(20)) + ", " + std::to_string(20 + chance.below(20)) + "]");
    lines.close('}');
    lines.close(']');
    lines.close('}');
    lines.put("lang", quoted("ja"));
    lines.close('}');
}

std::string coordinate(double value) {
    char text[32];
    const int size = std::snprintf(text, sizeof text, "%.15f", value);
    return {text, static_cast<std::size_t>(size)};
}

void putPerformance(Lines& lines, Chance& chance, std::size_t event) {
    lines.open("", '{');
    lines.put("eventId", std::to_string(event));
    lines.put("id", std::to_string(339'887'544 + chance.below(1000)));
    lines.put("logo", "null");
    lines.put("name", "null");
    const std::size_t categories = 1 + chance.below(4);
    lines.open("prices", '[');
    for (std::size_t at = 0; at < categories; ++at) {
        lines.open("", '{');
        lines.put("amount", std::to_string(10'000 + 250 * chance.below(400)));
        lines.put("audienceSubCategoryId", "337100890");
        lines.put("seatCategoryId", std::to_string(338'937'235 + at));
        lines.close('}');
    }
    lines.close(']');
    lines.open("seatCategories", '[');
    for (std::size_t at = 0; at < categories; ++at) {
        lines.open("", '{');
        lines.open("areas", '[');
        for (std::size_t area = 0; area < 2 + chance.below(8); ++area) {
            lines.open("", '{');
            lines.put("areaId", std::to_string(205'705'993 + area));
            lines.put("blockIds", "[]");
            lines.close('}');
        }
        lines.close(']');
        lines.put("seatCategoryId", std::to_string(338'937'235 + at));
        lines.close('}');
    }
    lines.close(']');
    lines.put("seatMapImage", "null");
    lines.put("start", std::to_string(1'372'701'600'000 + 3'600'000 * chance.below(9000)));
    lines.put("venueCode", quoted("PLEYEL_PLEYEL"));
    lines.close('}');
}

}  // namespace

Document twitterLike(int scale) {
    Chance chance;
    Document document{"twitter-like", "{", {}};
    const std::size_t messages = static_cast<std::size_t>(scale) * 31;
    Lines lines(document.text, 2);
    lines.open("statuses", '[');
    for (std::size_t at = 0; at < messages; ++at)
        putMessage(lines, chance);
    lines.close(']');
    document.text += "\n}\n";
    for (std::int64_t at = 0; at < 1000; ++at) {
        const std::int64_t position = at % static_cast<std::int64_t>(messages);
        document.paths.push_back(Path{"statuses", position, "user", "screen_name"});
    }
    return document;
}

Document canadaLike(int scale) {
    Chance chance;
    Document document{"canada-like",
                      R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{"name":"Canada"},)"
                      R"("geometry":{"type":"Polygon","coordinates":[)",
                      {{"features", std::int64_t{0}, "properties", "name"}}};
    const std::size_t rings = static_cast<std::size_t>(scale) * 20;
    for (std::size_t ring = 0; ring < rings; ++ring) {
        document.text += ring > 0 ? ",[" : "[";
        for (std::size_t point = 0; point < 125; ++point) {
            document.text += point > 0 ? ",[" : "[";
            document.text += coordinate(-60 - chance.part() * 39) + ',' + coordinate(41 + chance.part() * 42) + ']';
        }
        document.text += ']';
    }
    document.text += "]}}]}";
    return document;
}

Document citmLike(int scale) {
    Chance chance;
    Document document{"citm-like", "{", {}};
    const std::size_t events = static_cast<std::size_t>(scale) * 30;
    Lines lines(document.text, 4);
    lines.open("events", '{');
    for (std::size_t at = 0; at < events; ++at) {
        const std::string id = std::to_string(138'586'341 + 2 * at);
        lines.open(id, '{');
        lines.put("description", "null");
        lines.put("id", id);
        lines.put("logo", at % 3 == 0 ? quoted("\\/images\\/UE0AAAAACEKo6QAAAAZDSVRN") : "null");
        lines.put("name", quoted("30th Anniversary Tour " + std::to_string(at)));
        lines.put("subTopicIds", "[337184269, 337184283]");
        lines.put("subjectCode", "null");
        lines.put("topicIds", "[324846099, 107888604]");
        lines.close('}');
        document.paths.push_back(Path{"events", id, "name"});
    }
    lines.close('}');
    lines.open("performances", '[');
    for (std::size_t at = 0; at < events; ++at)
        putPerformance(lines, chance, 138'586'341 + 2 * at);
    lines.close(']');
    document.text += "\n}\n";
    return document;
}

}  // namespace kestrav::benchmark
