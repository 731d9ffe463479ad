#include "Application/Log/Analytics/Listeners/SaveListener.h"

#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "Application/Log/Analytics/Items/CatalogueText.h"
#include "Application/Log/Analytics/Items/SaveItem.h"
#include "Application/Log/Analytics/Listeners/InsertItem.h"

namespace qel::log::analytics::listeners {
namespace {

using items::SaveItem;
using qel::broadcaster::SaveKind;
using namespace qel::broadcaster::event;

constexpr std::array<std::string_view, 2> kindTexts{"SaveFile", "SaveProject"};
constexpr std::array<std::string_view, 7> answerTexts{"Ok", "Cancel",   "Retry",   "Yes",
                                                      "No", "TryAgain", "Continue"};

/// The text of an unknown kind is empty, whereas the text of an unknown answer is "Unknown".
std::unique_ptr<SaveItem> itemOf(SaveKind kind, const std::string& event) {
  return std::make_unique<SaveItem>(items::textOf(kindTexts, kind, ""), event);
}

}  // namespace

void SaveListener::onSavePromptAnswered(const SaveDialogEvent& event) {
  auto item = itemOf(event.kind, "UserAction");
  item->addDetail("UserAction", items::textOf(answerTexts, event.answer, "Unknown"));
  item->addDetail("Message", event.message);
  insertItem(databases_, std::move(item));
}

void SaveListener::onAutoSave(const AutoSaveEvent& event) {
  auto item = itemOf(event.kind, "AutoSave");
  item->addDetail("ProjectFilePath", event.path);
  item->addDetail("Succeeded", event.succeeded ? "True" : "False");
  insertItem(databases_, std::move(item));
}

}  // namespace qel::log::analytics::listeners
