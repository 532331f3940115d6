// SPDX-License-Identifier: MIT

// Broadcasts of stylesheets, change tracking and the document hooks.

#include "Scene.h"

#include <platform/NSException.h>
#include <ztstyles/ZTYTrackable.h>

#include <functional>

namespace zt::testing {
namespace {

struct Acting : SheetRecorder {
  Acting(Log& log, std::string name, std::function<void(ZTSStyle&)> act)
      : SheetRecorder(log, std::move(name)), mAct(std::move(act)) {}
  void addedStyleToStylesheet(ZTSStyle& style, ZTSStylesheet& sheet) override {
    SheetRecorder::addedStyleToStylesheet(style, sheet);
    mAct(style);
  }
  std::function<void(ZTSStyle&)> mAct;
};

TEST(StylesheetObserversTest, TellDescendantsFirstThenOwnThenTheCentre) {
  Scene top;
  Scene left(top.sheet.get()), right(top.sheet.get()), below(left.sheet.get());
  right.sheet->setIsChangeCommunicationEnabled(false);  // asked of the stylesheet that changes alone
  Log& log = top.log;
  std::deque<SheetRecorder> recorders;
  for (const auto& [scene, name] : {std::pair(&top, "top"), {&left, "left"}, {&right, "right"}, {&below, "below"}})
    scene->sheet->addObserver(&recorders.emplace_back(log, name));
  const auto note = [&](const NSNotification& n) {
    EXPECT_EQ(n.object, top.sheet.get());
    const auto* style = asStyle(n.userInfoForKey(ZTSStylesheetNotificationStyleKey));
    log.push_back(n.name.text() + " " + (style != nullptr ? style->identifier().text() : "-"));
  };
  NotificationListener added(ZTSStylesheetStyleAddedNotification, nullptr, note);
  NotificationListener removed(ZTSStylesheetStyleRemovedNotification, top.sheet.get(), note);
  NotificationListener moved(ZTSStylesheetParentChangedNotification, nullptr, [&](const NSNotification& n) {
    EXPECT_EQ(n.userInfo, nullptr);
    log.push_back("parent changed");
  });
  TestStyle& style = top.style("s");
  top.remove(style);
  EXPECT_EQ(log, (Log{"below added s", "left added s", "right added s", "top added s",
                      "ZTSStylesheetStyleAddedNotification s", "below removed s", "left removed s", "right removed s",
                      "top removed s", "ZTSStylesheetStyleRemovedNotification s"}));
  log.clear();
  left.sheet->setParent({});
  EXPECT_EQ(std::exchange(log, {}), (Log{"below parent", "left parent", "parent changed"}));
  top.sheet->setIsChangeCommunicationEnabled(false);
  top.undo();  // of the removal; undo and everything else goes on
  EXPECT_TRUE(top.sheet->holdsStyle(style));
  EXPECT_TRUE(log.empty());
}

TEST(StylesheetObserversTest, MayChangeEverythingWhileTheyAreTold) {
  Scene scene;
  auto below = std::make_unique<Scene>(scene.sheet.get());
  Log& log = scene.log;
  auto gone = std::make_unique<SheetRecorder>(log, "gone");
  Acting acting(log, "acting", [&](ZTSStyle& style) {
    if (style.identifier() != "first") return;
    scene.sheet->removeObserver(gone.get());
    gone.reset();
    scene.style("second");  // a broadcast inside the broadcast
    scene.remove(style);
    below->sheet->setParent({});
  });
  below->sheet->addObserver(&acting);
  SheetRecorder last(log, "last");
  scene.sheet->addObserver(gone.get());
  scene.sheet->addObserver(&last);
  scene.style("first");
  EXPECT_EQ(log, (Log{"acting added first", "acting added second", "last added second", "acting removed first",
                      "last removed first", "acting parent", "last added first"}));
  scene.sheet->removeObserver(&last);

  Acting ends(log, "ends", [&](ZTSStyle&) { scene.sheet.reset(); });
  scene.sheet->addObserver(&ends);
  scene.style("third");
  EXPECT_EQ(log.back(), "ends added third");
}

TEST(StylesheetObserversTest, AllAreToldWhateverOneThrows) {
  Scene scene;
  const auto raise = [](ZTSStyle& style) { throw NSGenericException(style.identifier().text()); };
  Acting first(scene.log, "first", raise);
  SheetRecorder second(scene.log, "second");
  scene.sheet->addObserver(&first);
  scene.sheet->addObserver(&second);
  NotificationListener listener(ZTSStylesheetStyleAddedNotification, nullptr, [&](const NSNotification&) {
    scene.log.push_back("listener");
    throw NSGenericException("later");
  });
  NotificationListener raising(ZTSStylesheetStyleRemovedNotification, nullptr,
                               [](const NSNotification&) { throw NSGenericException("gone"); });
  try {
    scene.add(scene.detached("a"));
    FAIL() << "nothing came out";
  } catch (const NSGenericException& exception) {
    EXPECT_EQ(exception.reason(), "a");
  }
  EXPECT_EQ(scene.log, (Log{"first added a", "second added a", "listener"}));
  for (SheetRecorder* each : {static_cast<SheetRecorder*>(&first), &second}) scene.sheet->removeObserver(each);
  // One that has no observers of its own tells those below.
  Scene below(scene.sheet.get());
  below.sheet->addObserver(&second);
  scene.log.clear();
  EXPECT_THROW(scene.remove(*scene.sheet->styleWithIdentifier("a")), NSGenericException);
  EXPECT_EQ(scene.log, Log{"second removed a"});
  below.sheet->removeObserver(&second);
}

template <class Base>
struct Tracking : Base, ZTYTrackable {
  bool isTrackingChanges() const override { return true; }
  NSObject* currentChangeTrackingSession() const override { return session.get(); }
  Ref<NSObject> session = NSNumber::withInteger(1);
};
struct Hooked : ZTSStyleOf<Hooked, TestStyle> {
  static constexpr const char* kClassName = "Hooked";
  void willBeAddedToDocument(NSDocument* document, NSObject* context) override { note("will add", document, context); }
  void wasAddedToDocument(NSDocument* document, NSObject* context) override { note("was added", document, context); }
  void willBeRemovedFromDocument(NSDocument* document) override { note("will remove", document, document); }
  void wasRemovedFromDocument(NSDocument* document) override { note("was removed", document, document); }
  void note(const char* what, NSObject* document, NSObject* context) {
    if (throws) throw NSGenericException(what);
    if (log != nullptr) log->push_back(what + (" " + identifier().text()) + (document == context ? "" : " wrong"));
  }
  Log* log = nullptr;
  bool throws = false;
};

TEST(StylesheetObserversTest, ForwardTrackingAndDocumentHooks) {
  Scene scene;
  EXPECT_FALSE(scene.sheet->isTrackingChanges());
  EXPECT_EQ(scene.sheet->currentChangeTrackingSession(), nullptr);
  Tracking<TestHost> host;
  TestHost plain;
  const Ref<Tracking<TestDocument>> tracking = make<Tracking<TestDocument>>();
  plain.theDocument = tracking;
  for (const auto& [each, session] :
       {std::pair<TestHost*, Ref<NSObject>>(&host, host.session), {&plain, tracking->session}}) {
    scene.sheet->setHost(each);
    EXPECT_TRUE(scene.sheet->isTrackingChanges());
    EXPECT_EQ(scene.sheet->currentChangeTrackingSession(), session);
    EXPECT_FALSE(scene.sheet->changeTrackingHasChanges());
    EXPECT_EQ(scene.sheet->changeTrackingChanges(), nullptr);
  }
  plain.hasDocument = false;
  EXPECT_FALSE(scene.sheet->isTrackingChanges());
  scene.sheet->setHost(&host);
  TestHost silent;
  for (TestHost* each : {&silent, static_cast<TestHost*>(nullptr)}) {
    scene.sheet->setHost(each);
    EXPECT_FALSE(scene.sheet->isTrackingChanges()) << "the host before answers no more";
  }
  scene.sheet->setHost(&plain);

  scene.style<Hooked>({}).log = &scene.log;
  scene.style<Hooked>("a").log = &scene.log;
  NSDocument* document = plain.theDocument.get();
  Hooked& thrower = scene.style<Hooked>("b");
  thrower.throws = true;
  EXPECT_THROW(scene.sheet->willBeAddedToDocument(document, document), NSGenericException);
  EXPECT_EQ(std::exchange(scene.log, {}), (Log{"will add a", "will add "})) << "all but the one that throws";
  thrower.throws = false;
  scene.remove(thrower);
  scene.sheet->willBeAddedToDocument(document, document);
  scene.sheet->wasAddedToDocument(document, document);
  scene.sheet->willBeRemovedFromDocument(document);
  scene.sheet->wasRemovedFromDocument(document);
  EXPECT_EQ(scene.log, (Log{"will add a", "will add ", "was added a", "was added ", "will remove a", "will remove ",
                            "was removed a", "was removed "}));
  scene.sheet->setHost(nullptr);
}

}  // namespace
}  // namespace zt::testing
