#!/usr/bin/env python3
"""Checks that the shared library exports the classes and functions of its interface and nothing else of its own.
Takes nm and the library. What the standard library's templates leave in every library is not looked at."""
import re
import subprocess
import sys

NAMESPACE = "qel::log::analytics::"
EXPORTED = {NAMESPACE + name for name in """
    Client ClientInterface
    recordedFiles removeRecordings
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

# What nm says of a symbol that is none of a class's operations, and what is the standard library's alone.
KIND = re.compile(r"(?:vtable|VTT|typeinfo|typeinfo name|guard variable|(?:non-)?virtual thunk) (?:for|to) ")
# The latter shows in the mangled names: demangled ones may begin with a return type.
STANDARD = re.compile(r"_Z(?:T[VTIS]|GV)?(?:Z?N?K?(?:S[tabsiod]|9__gnu_cxx)|P?F)")

nm, library = sys.argv[1:]


def symbols(*options):
    command = [nm, "-Dp", "--defined-only", *options, library]
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    return [line.split(maxsplit=2)[2] for line in lines]


complaints = []
seen = set()
for mangled, demangled in zip(symbols(), symbols("-C")):
    name = KIND.sub("", demangled)
    owner = next((known for known in EXPORTED if re.match(rf"{known}(::|\[|\(|$)", name)), None)
    if owner:
        seen.add(owner)
    elif not STANDARD.match(mangled):
        complaints.append(f"exported, but no part of the interface: {name}")
complaints += [f"part of the interface, but not exported: {name}" for name in sorted(EXPORTED - seen)]
print("\n".join(complaints) or f"the symbols of {len(seen)} classes and functions and the standard library")
sys.exit(1 if complaints else 0)
