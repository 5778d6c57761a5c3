/// The window layer on no screen: nibs, controls, events and pickers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <vector>

#include "automation.h"
#include "carbon_events.h"
#include "cf_bundle.h"
#include "descriptors.h"
#include "drawing.h"
#include "file_references.h"
#include "navigation_services.h"
#include "nibs.h"
#include "views.h"
#include "window_manager.h"
#include "window_ports.h"

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;

constexpr OSType kSignature = "ORw1"_4cc;

class WindowsTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    quillmere::windows::UseNoDisplay();
    quillmere::SetBundleResourceFolder(QUILLMERE_RESOURCES);
  }
  void SetUp() override {
    IBNibRef nib = nullptr;
    ASSERT_EQ(noErr, CreateNibReference(CFSTR("main"), &nib));
    ASSERT_EQ(noErr, SetMenuBarFromNib(nib, CFSTR("MenuBar")));
    ASSERT_EQ(noErr, CreateWindowFromNib(nib, CFSTR("MainWindow"), &window));
    DisposeNibReference(nib);
    ShowWindow(window);
  }
  void TearDown() override {
    DisposeWindow(window);
    Pump();
  }

  HIViewRef Control(SInt32 number) const {
    HIViewRef control = nullptr;
    EXPECT_EQ(noErr, HIViewFindByID(HIViewGetRoot(window), {kSignature, number}, &control))
        << number;
    return control;
  }
  static void Pump() {
    EventRef event = nullptr;
    while (ReceiveNextEvent(0, nullptr, 0, 1, &event) == noErr) {
      SendEventToEventTarget(event, GetEventDispatcherTarget());
      ReleaseEvent(event);
    }
  }
  static EventRef HitOf(HIViewRef control) {
    EventRef event = nullptr;
    CreateEvent(nullptr, kEventClassControl, kEventControlHit, 0, 0, &event);
    SetEventParameter(event, kEventParamDirectObject, typeControlRef, sizeof control,
                      static_cast<const void*>(&control));
    return event;
  }
  static void PostCommand(OSType id) {
    EventRef event = nullptr;
    CreateEvent(nullptr, kEventClassCommand, kEventCommandProcess, 0, 0, &event);
    HICommand command{};
    command.commandID = id;
    SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof command, &command);
    PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard);
    ReleaseEvent(event);
  }

  WindowRef window = nullptr;
};

void PostAtThirdFiring(EventLoopTimerRef, void* user_data) {
  if (++*static_cast<int*>(user_data) != 3) return;
  EventRef event = nullptr;
  CreateEvent(nullptr, "test"_4cc, 1, 0, 0, &event);
  PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard);
  ReleaseEvent(event);
}

TEST_F(WindowsTest, TimersFireWhileTheWindowSystemIsServed) {
  Pump();
  int firings = 0;
  EventLoopTimerRef timer = nullptr;
  ASSERT_EQ(noErr, InstallEventLoopTimer(GetMainEventLoop(), 0.001, 0.001, PostAtThirdFiring,
                                         &firings, &timer));
  EventRef event = nullptr;
  do {
    ReleaseEvent(event);
    ASSERT_EQ(noErr, ReceiveNextEvent(0, nullptr, kEventDurationForever, 1, &event));
  } while (GetEventClass(event) != "test"_4cc);
  ReleaseEvent(event);
  EXPECT_EQ(noErr, RemoveEventLoopTimer(timer));
  EXPECT_GE(firings, 3);
}

struct Calls {
  std::vector<int> order;
  OSStatus status = eventNotHandledErr;
};
struct Handler {
  Calls* calls;
  int number;
};

OSStatus NoteCall(EventHandlerCallRef, EventRef, void* user_data) {
  const auto* handler = static_cast<const Handler*>(user_data);
  handler->calls->order.push_back(handler->number);
  return handler->calls->status;
}

constexpr EventTypeSpec kHit{kEventClassControl, kEventControlHit};

TEST_F(WindowsTest, TheNibHasTwelveControls) {
  for (SInt32 number = 2000; number <= 2011; ++number)
    EXPECT_NE(nullptr, Control(number));
  HIViewRef none = window != nullptr ? HIViewGetRoot(window) : nullptr;
  EXPECT_EQ(errUnknownControl, HIViewFindByID(HIViewGetRoot(window), {kSignature, 2012}, &none));
  EXPECT_EQ(nullptr, none);
  EXPECT_GE(GetControl32BitMaximum(Control(2008)), 100);
}

TEST_F(WindowsTest, WrongNamesGiveStatuses) {
  IBNibRef nib = nullptr;
  EXPECT_EQ(kIBCarbonRuntimeCantFindNibFile, CreateNibReference(CFSTR("other"), &nib));
  ASSERT_EQ(noErr, CreateNibReference(CFSTR("main"), &nib));
  WindowRef made = nullptr;
  EXPECT_EQ(kIBCarbonRuntimeCantFindObject, CreateWindowFromNib(nib, CFSTR("Other"), &made));
  EXPECT_EQ(kIBCarbonRuntimeObjectNotOfRequestedType, SetMenuBarFromNib(nib, CFSTR("Apply")));
  DisposeNibReference(nib);
}

TEST_F(WindowsTest, HandlersRunLastFirstAndThenOutwards) {
  Calls calls;
  Handler first{&calls, 1};
  Handler second{&calls, 2};
  Handler outer{&calls, 3};
  HIViewRef control = Control(2001);
  InstallEventHandler(GetControlEventTarget(control), NoteCall, 1, &kHit, &first);
  InstallEventHandler(GetControlEventTarget(control), NoteCall, 1, &kHit, &second);
  InstallEventHandler(GetWindowEventTarget(window), NoteCall, 1, &kHit, &outer);
  EXPECT_EQ(noErr, HIViewSimulateClick(control, 0, 0, nullptr));
  EXPECT_EQ((std::vector<int>{2, 1, 3}), calls.order);
  calls = {{}, noErr};
  HIViewSimulateClick(control, 0, 0, nullptr);
  EXPECT_EQ((std::vector<int>{2}), calls.order);
}

TEST_F(WindowsTest, AHitOfAControlThatBecameInactiveIsDropped) {
  Calls calls{{}, noErr};
  Handler handler{&calls, 1};
  HIViewRef apply = Control(2006);
  InstallEventHandler(GetWindowEventTarget(window), NoteCall, 1, &kHit, &handler);
  EventRef event = HitOf(apply);
  PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard);
  EXPECT_EQ(eventAlreadyPostedErr,
            PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard));
  ReleaseEvent(event);
  HIViewSetActivated(apply, 0);
  Pump();
  EXPECT_TRUE(calls.order.empty());
  EXPECT_EQ(errControlIsNotActive, HIViewSimulateClick(apply, 0, 0, nullptr));
}

TEST_F(WindowsTest, CloseAndQuitMakeReferencesInvalidNotDangling) {
  HIViewRef control = Control(2000);
  SetWRefCon(window, &control);
  PostCommand(kHICommandClose);
  Pump();
  EXPECT_FALSE(IsValidWindowPtr(window));
  EXPECT_EQ(nullptr, GetWRefCon(window));
  HIRect frame{};
  EXPECT_EQ(errInvalidWindowRef, HIViewGetFrame(control, &frame));
  EXPECT_EQ(nullptr, GetWindowEventTarget(window));
  PostCommand(kHICommandQuit);
  RunApplicationEventLoop();  // returns, since the command waits in the queue
}

TEST_F(WindowsTest, TextBarAndFrameKeepWhatTheyAreGiven) {
  HIViewRef text = Control(2000);
  const Owned<CFStringRef> name(quillmere::CreateFromUtf8("<b>a & b</b> \xF0\x9F\x8E\xA5.png"));
  CFStringRef string = name.get();
  EXPECT_EQ(noErr, SetControlData(text, 0, kControlStaticTextCFStringTag, sizeof string,
                                  static_cast<const void*>(&string)));
  CFStringRef got = nullptr;
  EXPECT_EQ(noErr, GetControlData(text, 0, kControlStaticTextCFStringTag, sizeof got,
                                  static_cast<void*>(&got), nullptr));
  EXPECT_EQ(quillmere::ToUtf8(string), quillmere::ToUtf8(got));
  CFRelease(got);

  HIViewRef bar = Control(2008);
  SetControl32BitValue(bar, 1 << 30);
  EXPECT_EQ(GetControl32BitMaximum(bar), GetControl32BitValue(bar));
  SetControl32BitValue(bar, -5);
  EXPECT_EQ(0, GetControl32BitValue(bar));
  EXPECT_EQ(errDataNotSupported, SetControlData(bar, 0, kControlStaticTextCFStringTag,
                                                sizeof string, static_cast<const void*>(&string)));

  HIViewRef preview = Control(2007);
  const HIRect wanted{{12, 34}, {100, 50}};
  EXPECT_EQ(noErr, HIViewSetFrame(preview, &wanted));
  Pump();
  HIRect frame{};
  EXPECT_EQ(noErr, HIViewGetFrame(preview, &frame));
  EXPECT_EQ(12, frame.origin.x);
  EXPECT_EQ(50, frame.size.height);
}

struct Asked {
  UInt32 action = 0;
  FSRef chosen{};
  OSStatus reply_status = 1;
};

void TakeReply(SInt32 selector, NavCBRec* parameters, void* user_data) {
  if (selector != kNavCBUserAction) return;
  auto* asked = static_cast<Asked*>(user_data);
  asked->action = NavDialogGetUserAction(parameters->context);
  NavReplyRecord reply{};
  asked->reply_status = NavDialogGetReply(parameters->context, &reply);
  if (asked->reply_status != noErr) return;
  AEGetNthPtr(&reply.selection, 1, typeFSRef, nullptr, nullptr, &asked->chosen,
              sizeof asked->chosen, nullptr);
  NavDisposeReply(&reply);
}

TEST_F(WindowsTest, QueuedAnswersPassTheDialogsRules) {
  char pattern[] = "/tmp/quillmere-windows-XXXXXX";
  const fs::path folder = mkdtemp(pattern);
  const fs::path file = folder / "a.png";
  std::ofstream(file) << "x";
  const struct {
    fs::path answer;
    bool folders;
    UInt32 action;
  } cases[] = {{file, false, kNavUserActionChoose},
               {folder, true, kNavUserActionChoose},
               {folder, false, kNavUserActionCancel},
               {file, true, kNavUserActionCancel},
               {folder / "none", false, kNavUserActionCancel}};
  for (const auto& test : cases) {
    Asked asked;
    NavDialogCreationOptions options{};
    NavGetDefaultDialogCreationOptions(&options);
    options.message = CFSTR("Pick one");
    NavDialogRef dialog = nullptr;
    ASSERT_EQ(noErr, test.folders ? NavCreateChooseFolderDialog(&options, TakeReply, nullptr,
                                                                &asked, &dialog)
                                  : NavCreateChooseFileDialog(&options, nullptr, TakeReply, nullptr,
                                                              nullptr, &asked, &dialog));
    quillmere::windows::QueuePickerAnswer(test.answer);
    EXPECT_EQ(noErr, NavDialogRun(dialog));
    NavDialogDispose(dialog);
    EXPECT_EQ(test.action, asked.action) << test.answer;
    fs::path chosen;
    if (test.action == kNavUserActionChoose) {
      EXPECT_EQ(noErr, quillmere::files::PathOf(asked.chosen, &chosen));
      EXPECT_TRUE(fs::equivalent(test.answer, chosen));
    } else {
      EXPECT_EQ(userCanceledErr, asked.reply_status);
    }
    EXPECT_EQ("Pick one", quillmere::windows::LastPickerMessage());
  }
  fs::remove_all(folder);
}

TEST_F(WindowsTest, PortAndPictureAreDrawnUnderTheControls) {
  CGrafPtr port = GetWindowPort(window);
  ASSERT_NE(port, nullptr);
  EXPECT_EQ(GetWindowPort(window), port);
  Rect bounds{};
  GetPortBounds(port, &bounds);
  EXPECT_GT(bounds.right, 100);
  GrafPtr saved = nullptr;
  GetPort(&saved);
  SetPortWindowPort(window);
  Point point = {0, 0};
  LocalToGlobal(&point);
  const Point corner = point;
  GlobalToLocal(&point);
  EXPECT_EQ(point.h, 0);
  EXPECT_GE(corner.h, 0);
  const OpenCPicParams header = {bounds, kPicture72Dpi, kPicture72Dpi, kOpenCPicVersion, 0, 0};
  const PicHandle picture = OpenCPicture(&header);
  ForeColor(205);
  PaintRect(&bounds);
  ClosePicture();
  SetPort(saved);
  const auto red_pixels = [this] {
    const auto image = quillmere::windows::SnapshotOf(window);
    std::size_t count = 0;
    for (std::size_t i = 0; i + 2 < image.size(); i += 3)
      if (image[i] == 255 && image[i + 1] == 0 && image[i + 2] == 0) ++count;
    return count;
  };
  EXPECT_EQ(red_pixels(), 0U);
  SetWindowPic(window, picture);
  EXPECT_EQ(GetWindowPic(window), picture);
  EXPECT_GT(red_pixels(), 1000U);
  DisposeWindow(window);  // with its picture
  EXPECT_EQ(GetWindowPort(window), nullptr);
  EXPECT_EQ(GetWindowPic(window), nullptr);
}

}  // namespace
