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

# Mangled names begin with what they are: a function, a type's description (vtable, type information), a thunk, a guard,
# something within a function.
KIND = r"_Z(?:T[VTIS]|Thn?\d+_|Tvn?\d+_n?\d+_|GV)?Z?"
NESTED_NAME = re.compile(KIND + r"N[VK]*(?=\d)")
STANDARD = re.compile(KIND + r"(?:N[VK]*)?(?:St|S[absiod]|9__gnu_cxx)|_ZT[IS]P?F")


def qualified_name(symbol):
    """The names in front of a symbol's operation, joined; empty when it is no nested name."""
    match = NESTED_NAME.match(symbol)
    position = match.end() if match else len(symbol)
    names = []
    while length := re.match(r"\d+", symbol[position:]):
        start = position + length.end()
        position = start + int(length[0])
        names.append(symbol[start:position])
    return "::".join(names)


def main():
    nm, library = sys.argv[1:]
    listing = subprocess.run([nm, "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    symbols = [line.split()[-1] for line in listing.splitlines()]
    complaints = []
    seen = set()
    for symbol in symbols:
        name = qualified_name(symbol)
        owner = next((known for known in EXPORTED if (name + "::").startswith(known + "::")), None)
        if owner:
            seen.add(owner)
        elif not STANDARD.match(symbol):
            complaints.append(f"exported, but no part of the interface: {name or symbol}")
    complaints += [f"part of the interface, but not exported: {name}" for name in sorted(EXPORTED - seen)]
    print("\n".join(complaints) or f"{len(symbols)} symbols, of {len(seen)} classes and the standard library")
    return 1 if complaints else 0


sys.exit(main())
