#!/usr/bin/env python3
"""Checks that the shared library exports the classes of its interface, their nested ones, and nothing else of its own.
Takes nm and the library. What the standard library's templates leave in every library is not looked at."""
import re
import subprocess
import sys

NAMESPACE = "qel::log::analytics::"
EXPORTED = {NAMESPACE + name for name in """
    Client ClientInterface
    AccumulatingDispatcher CipDatabaseClient CipDatabaseClientInterface CipDatabases
    SupportDatabaseClient SupportDatabaseExporter
    details::DatabaseAdapter details::DatabaseAdapterInterface details::DatabaseAdapterTimestampDecorator
    details::DatabaseClientBase
    items::ActionItem items::ApplicationItem items::BaseEventItem items::BaseEventItemWithDetail items::BaseItem
    items::BimFileItem items::BimModelItem items::CipInfoItem items::CommandItem items::CrashReportItem
    items::EnvironmentInterface items::EnvironmentItem items::EventInterface items::FocusItem items::GeneralEventItem
    items::IssueListStorageEvent items::IssueListUserActionEvent items::ItemInterface items::ItemWrapper
    items::MemoryUsageItem items::PresentationItem items::ProjectItem items::SaveItem items::UserInfoItem
    items::UserLocationItem items::WebUpdateItem
    items::details::ApplicationInfo items::details::HardwareEnvironmentInfo items::details::OsEnvironmentInfo
    items::details::QelEnvironmentInfo
    listeners::ActionListener listeners::ApplicationListener listeners::CommandListener listeners::GeneralListener
    listeners::IssueListStorageListener listeners::IssueListUserActionListener listeners::ProjectListener
    listeners::SaveListener
    reports::MemoryUsageObserver reports::MemoryUsageReporterInterface
    serverconnection::DbToServerConnection serverconnection::DbToServerConnectionInterface
    systemenvironment::SystemEnvironment systemenvironment::SystemEnvironmentInterface""".split()}
# `parameters::ActivateParameter`, `reports::WebUpdateReporterInterface` and `IssueListInformationInterface` belong to
# the interface as well, but are complete in their headers: there is nothing of them to export.

# What nm says of a symbol that is none of a class's operations, and of what is the standard library's alone.
KIND = re.compile(r"(?:vtable|VTT|typeinfo|typeinfo name|guard variable|(?:non-)?virtual thunk) (?:for|to) ")
STANDARD = re.compile(r"(?:\w+ )*(?:std|__gnu_cxx)::|[\w ]+ \(\*?\)")

nm, library = sys.argv[1:]
listing = subprocess.run([nm, "-DC", "--defined-only", library], check=True, capture_output=True, text=True).stdout
complaints = []
seen = set()
for line in listing.splitlines():
    name = KIND.sub("", line.split(maxsplit=2)[2])
    owner = next((known for known in EXPORTED if f"{name}::".startswith(f"{known}::")), None)
    if owner:
        seen.add(owner)
    elif not STANDARD.match(name):
        complaints.append(f"exported, but no part of the interface: {name}")
complaints += [f"part of the interface, but not exported: {name}" for name in sorted(EXPORTED - seen)]
print("\n".join(complaints) or f"the symbols of {len(seen)} classes and the standard library")
sys.exit(1 if complaints else 0)
