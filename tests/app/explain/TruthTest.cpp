// What an office program answered for five real documents, against what `explain --json` says. The office's names for
// values differ, and it shows colour and fonts as they come out of several attributes: that is translated here.

#include <tests/app/TestDocuments.h>

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
    const auto font = get("text.style.font-name");
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
    const auto height = get("paragraph.fo.line-height");
    return height ? Json(text(*height)) : Json();
  }
  if (name == "break") {
    const auto before = get("paragraph.fo.break-before");
    return !before                   ? Json()
           : text(*before) == "page" ? Json("page-before")
           : text(*before) == "auto" ? Json("none")
                                     : Json(text(*before));
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

TEST(TruthTest, ExplainedValuesAreThoseThatAnOfficeProgramShows) {
  std::size_t compared = 0;
  for (const std::string name : {"01-tiny-blank-page", "02-tiny-address-label", "03-small-invoice",
                                 "05-medium-markup-writer", "08-medium-font-features"}) {
    const Json truth = readJson(dataPath(name + ".truth.json"));
    const auto flatFile = dataPath(name + ".fodt");
    const Explained document(std::filesystem::exists(flatFile) ? flatFile : dataPath(name));
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
      Applied applied;
      if (sample.contains("spans")) {
        for (const Json& span : sample["spans"]) {
          const Json* style =
              span["automatic"] ? document.automatic("text", span["style"]) : document.named("text", span["style"]);
          if (style != nullptr) applied.insert(applied.begin(), style);
        }
      }
      const std::string paragraph = sample["paragraph_style"];
      const Json* style = sample["paragraph_style_is_automatic"] ? document.automatic("paragraph", paragraph)
                                                                 : document.named("paragraph", paragraph);
      ASSERT_NE(style, nullptr) << name << ' ' << paragraph;
      applied.push_back(style);
      compared += compare(document, applied, sample,
                          name + " sample " + paragraph + " '" + sample["text"].get<std::string>() + '\'');
    }
  }
  EXPECT_GT(compared, 2500u);
}

}  // namespace
