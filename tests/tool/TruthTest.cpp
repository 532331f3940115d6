// SPDX-License-Identifier: MIT

// What an office program answered for five real documents, against what `explain --json` says. The office's names for
// values differ, and it shows colour and fonts as they come out of several attributes: that is translated here.

#include <tests/TestDocuments.h>
#include <tests/tool/ToolRun.h>

#include <cmath>
#include <map>

namespace {

using namespace zt::test;
using Json = nlohmann::json;

/// The explained styles of a document, found as its text finds them.
class Explained {
 public:
  explicit Explained(const std::filesystem::path& path) : mJson(runTool({"explain", "--json", path.string()}).json()) {
    for (const Json& style : mJson["styles"]) {
      const std::string family = style["family"];
      const bool isAutomatic = style["kind"] == "automatic";
      // The samples are of the body: its part counts where both parts use a name for automatic styles.
      if (isAutomatic && style["part"] == "styles.xml" && automatic(family, style["name"]) != nullptr) continue;
      mStyles[(isAutomatic ? "automatic:" : "named:") + family + ':' + style["name"].get<std::string>()] = &style;
    }
  }

  [[nodiscard]] const Json* named(const std::string& family, const std::string& name) const {
    return find("named:", family, name);
  }
  [[nodiscard]] const Json* automatic(const std::string& family, const std::string& name) const {
    return find("automatic:", family, name);
  }
  [[nodiscard]] std::string fontFamily(const std::string& font) const {
    return mJson["font_families"].value(font, font);
  }
  [[nodiscard]] std::size_t size() const { return mStyles.size(); }

 private:
  [[nodiscard]] const Json* find(const std::string& kind, const std::string& family, const std::string& name) const {
    const auto found = mStyles.find(kind + family + ':' + name);
    return found == mStyles.end() ? nullptr : found->second;
  }

  Json mJson;
  std::map<std::string, const Json*> mStyles;
};

/// The styles that apply to a piece of text, nearest first: character styles, then that of the paragraph.
using Applied = std::vector<const Json*>;

struct Found {
  Json property;
  std::pair<std::size_t, std::size_t> distance;  // which style, how far up its chain: the smaller one is nearer
};

std::optional<Found> find(const Applied& styles, const std::string& key) {
  for (std::size_t index = 0; index < styles.size(); ++index) {
    const Json& style = *styles[index];
    if (!style["properties"].contains(key)) continue;
    const Json& property = style["properties"][key];
    const auto& chain = style["chain"];
    const auto level = std::find(chain.begin(), chain.end(), property["set_by"]);
    return Found{property, {index, static_cast<std::size_t>(level - chain.begin())}};
  }
  return std::nullopt;
}

std::string text(const Found& found) {
  return found.property["value"].is_null() ? std::string() : found.property["value"].get<std::string>();
}

// The nearest font that is declared: an undeclared name says nothing, so that what it hides shows through.
std::optional<Found> findFont(const Explained& document, const Applied& styles) {
  for (std::size_t index = 0; index < styles.size(); ++index) {
    const Json& style = *styles[index];
    if (!style["properties"].contains("text.style.font-name")) continue;
    for (const Json& entry : style["properties"]["text.style.font-name"]["entries"]) {
      if (document.fontFamily(entry["value"].get<std::string>()).empty()) continue;
      const auto& chain = style["chain"];
      const auto level = std::find(chain.begin(), chain.end(), entry["style"]);
      return Found{entry, {index, static_cast<std::size_t>(level - chain.begin())}};
    }
  }
  return std::nullopt;
}

// The value in the office's terms, null where the file does not say.
Json officeValue(const Explained& document, const Applied& styles, const std::string& name) {
  const auto get = [&](const std::string& key) { return find(styles, key); };
  if (name.starts_with("margin-") || name == "text-indent") {
    const auto length = get("paragraph.fo." + name);
    return length ? Json(length->property["mm"].get<double>() * 100) : Json();
  }
  if (name == "font-size") {
    const auto size = get("text.fo.font-size");
    if (!size) return {};
    if (size->property["kind"] != "percentage") return size->property["pt"];
    const Applied rest(styles.begin() + static_cast<std::ptrdiff_t>(size->distance.first) + 1, styles.end());
    const Json base = officeValue(document, rest, name);
    return base.is_null() ? base : Json(base.get<double>() * size->property["percent"].get<double>() / 100);
  }
  if (name == "font-name") {
    const auto font = findFont(document, styles);
    const auto family = get("text.fo.font-family");
    if (family && (!font || family->distance < font->distance)) {
      const std::string quoted = text(*family);
      return quoted.starts_with('\'') ? quoted.substr(1, quoted.size() - 2) : quoted;
    }
    return font ? Json(document.fontFamily(text(*font))) : Json();
  }
  if (name == "color") {
    const auto colour = get("text.fo.color");
    const auto automatic = get("text.style.use-window-font-color");
    if (automatic && text(*automatic) == "true" && (!colour || automatic->distance <= colour->distance)) return "auto";
    return colour ? Json(text(*colour)) : Json();
  }
  if (name == "font-weight") {
    const auto weight = get("text.fo.font-weight");
    if (!weight) return {};
    return text(*weight) == "bold" ? "700" : text(*weight) == "normal" ? "400" : text(*weight);
  }
  if (name == "language") {
    const auto language = get("text.fo.language");
    const auto country = get("text.fo.country");
    if (!language || text(*language) == "zxx" || text(*language) == "none") return language ? Json("") : Json();
    return text(*language) + (country && text(*country) != "none" ? '-' + text(*country) : "");
  }
  if (name == "underline") {
    const auto style = get("text.style.text-underline-style");
    const auto type = get("text.style.text-underline-type");
    if (style && text(*style) == "solid" && type && text(*type) == "double") return "double";
    return !style ? Json() : text(*style) == "solid" ? Json("single") : Json(text(*style));
  }
  if (name == "keep-with-next") {
    const auto keep = get("paragraph.fo.keep-with-next");
    return keep ? Json(text(*keep) == "always") : Json();
  }
  if (name == "text-align") {
    const auto align = get("paragraph.fo.text-align");
    return !align                    ? Json()
           : text(*align) == "start" ? Json("left")
           : text(*align) == "end"   ? Json("right")
                                     : Json(text(*align));
  }
  if (name == "line-height") {
    std::optional<Found> nearest;
    std::string prefix;
    for (const auto& [key, word] : {std::pair{"paragraph.fo.line-height", "exactly:"},
                                    {"paragraph.style.line-height-at-least", "at-least:"},
                                    {"paragraph.style.line-spacing", "leading:"}}) {
      const auto height = get(key);
      if (!height || (nearest && nearest->distance <= height->distance)) continue;
      nearest = height;
      prefix = word;
    }
    if (!nearest) return {};
    if (text(*nearest) == "normal") return "100%";
    if (nearest->property["kind"] != "length") return text(*nearest);
    return prefix + std::to_string(std::lround(nearest->property["mm"].get<double>() * 100));
  }
  if (name == "break") {
    std::string sides;
    for (const char* side : {"before", "after"}) {
      const auto found = get(std::string("paragraph.fo.break-") + side);
      if (found && text(*found) != "auto") sides = sides.empty() ? text(*found) + '-' + side : text(*found) + "-both";
      if (found && sides.empty()) sides = "none";
    }
    return sides.empty() ? Json() : Json(sides);
  }
  if (name == "master-page") {
    const auto page = get("style.style.master-page-name");
    return page ? Json(text(*page)) : Json();
  }
  const auto plain = get("text.fo." + name);
  return plain ? Json(text(*plain)) : Json();
}

bool agree(const Json& expected, const Json& found) {
  if (expected.is_number() && found.is_number()) {
    return std::abs(expected.get<double>() - found.get<double>()) <= (expected.is_number_float() ? 0.051 : 2.0);
  }
  return expected == found;
}

std::size_t compare(const Explained& document, const Applied& styles, const Json& truth, const std::string& label) {
  std::size_t compared = 0;
  for (const auto& [name, expected] : truth["values"].items()) {
    const auto& builtIn = truth["built_in"];
    if (std::find(builtIn.begin(), builtIn.end(), name) != builtIn.end()) continue;
    const Json found = officeValue(document, styles, name);
    EXPECT_TRUE(agree(expected, found)) << label << ' ' << name << ": expected " << expected << ", found " << found;
    ++compared;
  }
  return compared;
}

// None where the text refers to a paragraph style that the document does not have.
Applied appliedStyles(const Explained& document, const Json& sample) {
  const auto find = [&](const char* family, const std::string& name, bool isAutomatic) {
    return isAutomatic ? document.automatic(family, name) : document.named(family, name);
  };
  const Json* paragraph = find("paragraph", sample["paragraph_style"], sample["paragraph_style_is_automatic"]);
  if (paragraph == nullptr) return {};
  Applied applied = {paragraph};
  for (const Json& span : sample.value("spans", Json::array())) {
    if (const Json* style = find("text", span["style"], span["automatic"])) applied.insert(applied.begin(), style);
  }
  return applied;
}

// Every document beside which an answer lies is compared, so that more can be put there.
TEST(TruthTest, ExplainedValuesAreThoseThatAnOfficeProgramShows) {
  std::size_t compared = 0;
  std::size_t documents = 0;
  for (const auto& file : std::filesystem::directory_iterator(dataPath(""))) {
    const std::string fileName = file.path().filename().string();
    if (!fileName.ends_with(".truth.json")) continue;
    ++documents;
    const std::string name = fileName.substr(0, fileName.size() - std::string(".truth.json").size());
    const Json truth = readJson(file.path());
    auto path = dataPath(name);
    for (const char* ending : {".fodt", ".odt", ".ott"}) {
      if (std::filesystem::exists(dataPath(name + ending))) path = dataPath(name + ending);
    }
    const Explained document(path);
    for (const auto& [family, styles] : truth["styles"].items()) {
      for (const auto& [styleName, expected] : styles.items()) {
        const Json* style = document.named(family, styleName);
        ASSERT_NE(style, nullptr) << name << ' ' << styleName;
        const std::string label = name + ' ' + family + ':' + styleName;
        compared += compare(document, {style}, expected, label);
        EXPECT_EQ(expected["display_name"], (*style)["display_name"]) << label;
        const Json parent =
            expected["parent"].is_null() ? Json(family) : Json(family + ':' + expected["parent"].get<std::string>());
        EXPECT_EQ((*style)["parent"], parent) << label;
        // Without a next style, the style itself follows.
        const Json next = (*style)["next_style"].is_null() ? Json(styleName) : (*style)["next_style"];
        EXPECT_EQ(expected.value("next", next), next) << label;
      }
    }
    for (const Json& sample : truth["sample"]) {
      const Applied applied = appliedStyles(document, sample);
      const std::string label = name + " sample " + sample["paragraph_style"].get<std::string>() + " '" +
                                sample["text"].get<std::string>() + '\'';
      if (!applied.empty()) compared += compare(document, applied, sample, label);
    }
  }
  EXPECT_GE(documents, 5u);
  EXPECT_GT(compared, 2500u);
}

}  // namespace
