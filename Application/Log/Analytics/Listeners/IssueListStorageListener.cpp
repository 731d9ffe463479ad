#include "Application/Log/Analytics/Listeners/IssueListStorageListener.h"

#include <array>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "Application/Log/Analytics/Items/CatalogueText.h"
#include "Application/Log/Analytics/Listeners/InsertItem.h"
#include "Core/Utilities/Assertions/FailedCheck.h"
#include "host/QelUtilities/NumberText.h"

namespace qel::log::analytics::listeners {
namespace {

using issue::IssueInstance;
using items::IssueListStorageEvent;
using items::textOf;

constexpr std::array<std::string_view, 3> priorityTexts{"Low", "Medium", "High"};
constexpr std::array<std::string_view, 3> messageCategoryTexts{"Info", "Error", "Warning"};

struct AttributeKey {
  std::uint32_t attribute;
  const char* key;
};

// The first key is misspelled deliberately: the server expects it that way. Attributes 3 and 5 are
// not recorded.
constexpr std::array<AttributeKey, 7> attributeKeys{{{1, "ObjectAttributeProffesion"},
                                                     {2, "ObjectAttributeDescription"},
                                                     {0, "ObjectAttributeMessageType"},
                                                     {4, "ObjectAttributeModel"},
                                                     {7, "ObjectAttributeSystem"},
                                                     {6, "ObjectAttributeMedium"},
                                                     {8, "ObjectAttributeTimestamp"}}};

constexpr util::CheckedClass thisClass{
    "qel::log::analytics::listeners::IssueListStorageListener",
    "Application/Log/Analytics/Listeners/IssueListStorageListener"};
constexpr util::FailedCheck noInformation{"issueAdded", 29,
                                          "IssueListInformationInterface should not be nullptr."};
constexpr util::FailedCheck unknownIssue{"issuesRemoved", 57,
                                         "Assert: Information about issue not found in cache.\n"};
constexpr util::FailedCheck failedItem{
    "createStorageItem", 118, "Assert: Information for adding an issue could not be created.\n"};

}  // namespace

IssueListStorageListener::IssueListStorageListener(
    CipDatabases& databases, std::unique_ptr<IssueListInformationInterface> information)
    : databases_(databases), information_(std::move(information)) {}

void IssueListStorageListener::issueAdded(const std::shared_ptr<IssueInstance>& issue, bool flag) {
  if (!information_) {
    report(thisClass, noInformation);
  }
  if (!issue || !information_ || flag) {
    return;
  }
  auto item = createStorageItem(*issue);
  if (item && recorded_.try_emplace(details::IssueKey(*issue), *item).second) {
    insertItem(databases_, std::move(item));
  }
}

void IssueListStorageListener::issuesRemoved(
    const std::vector<std::shared_ptr<IssueInstance>>& issues) {
  for (const auto& issue : issues) {
    if (!issue) {
      continue;
    }
    const auto found = recorded_.find(details::IssueKey(*issue));
    if (found == recorded_.end()) {
      report(thisClass, unknownIssue);
      continue;
    }
    auto item = std::make_unique<IssueListStorageEvent>(found->second);
    item->updateTimestamp();
    item->setChange(IssueListStorageEvent::Change::Removed);
    insertItem(databases_, std::move(item));
    recorded_.erase(found);
  }
}

void IssueListStorageListener::issuesRemoveAll() {
  insertItem(databases_,
             std::make_unique<IssueListStorageEvent>(IssueListStorageEvent::Change::RemovedAll));
}

void IssueListStorageListener::issueReadStateChanged(
    const std::vector<std::shared_ptr<IssueInstance>>& /*issues*/) {}

std::unique_ptr<IssueListStorageEvent> IssueListStorageListener::createStorageItem(
    const IssueInstance& issue) const {
  try {
    auto item = std::make_unique<IssueListStorageEvent>(IssueListStorageEvent::Change::Added);
    item->addDetail("Id", issue.id.toString(false));
    item->addDetail("Priority", textOf(priorityTexts, issue.priority, "Unknown"));
    item->addDetail("Description", issue.description);
    item->addDetail("Timestamp", utilities::textWithSixDecimals(issue.timestamp));
    item->addDetail("SolverAttached", issue.solvers.empty() ? "false" : "true");
    addMessageDetails(issue, *item);
    addObjectAttributes(issue, *item);
    return item;
  } catch (const std::exception&) {
    report(thisClass, failedItem);
    return nullptr;
  }
}

void IssueListStorageListener::addMessageDetails(const IssueInstance& issue,
                                                 IssueListStorageEvent& item) const {
  if (!issue.message) {
    item.addDetail("Message", "Null");
    return;
  }
  const auto& message = *issue.message;
  item.addDetail("MessageAction", information_->getMessageActionText(message.action));
  item.addDetail("MessageSystemType", information_->getMessageSystemTypeText(message));
  item.addDetail("MessageObjectDescription",
                 information_->getMessageObjectDescriptionText(message));
  item.addDetail("MessageCategory", textOf(messageCategoryTexts, message.category, "Unknown"));
}

/// If there are several records, the texts of the first record are kept.
void IssueListStorageListener::addObjectAttributes(const IssueInstance& issue,
                                                   IssueListStorageEvent& item) const {
  for (const auto& record : issue.objectAttributes) {
    for (const auto& [attribute, key] : attributeKeys) {
      item.addDetail(key, information_->getObjectAttributeText(attribute, record));
    }
  }
}

}  // namespace qel::log::analytics::listeners
