#pragma once

/// Forward declarations of the listeners, for code that only stores pointers to them.
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
