#pragma once

/// The listeners, declared for code that only holds them.
namespace qel::log::analytics::listeners {

class ActionListener;
class ApplicationListener;
class CommandListener;
class GeneralListener;
class IssueListStorageListener;
class IssueListUserActionListener;
class ProjectListener;
class SaveListener;

}  // namespace qel::log::analytics::listeners
