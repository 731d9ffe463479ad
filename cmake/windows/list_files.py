#!/usr/bin/env python3
"""Writes the lists of files that the installers install and remove.

Takes the folder of the files, relative to the working directory of the installers' makers, the name of the list for
NSIS, and the name of the list for the MSI.
"""

import hashlib
import pathlib
import sys
import uuid
import xml.etree.ElementTree as ET

# Windows Installer recognises a folder by an identifier made of this one and the folder's path. It must never change.
NAMESPACE = uuid.UUID("76D8C1B1-4C0B-4C3E-9F2E-2D0C9C5B5D34")


def files_in(folder):
    return sorted(entry for entry in folder.iterdir() if entry.is_file())


def folders_in(folder):
    return sorted(entry for entry in folder.iterdir() if entry.is_dir())


def with_folders_inside(folder):
    yield folder
    for inner in folders_in(folder):
        yield from with_folders_inside(inner)


def nsis_list(root):
    def place(path):
        return "\\".join(("$INSTDIR", *path.relative_to(root).parts))

    folders = list(with_folders_inside(root))
    yield "!macro InstallFiles"
    for folder in folders:
        yield f'SetOutPath "{place(folder)}"'
        yield from (f'File "{file}"' for file in files_in(folder))
    yield "!macroend"
    yield "!macro OpenPrograms"
    for program in (file for folder in folders for file in files_in(folder) if file.suffix in (".dll", ".exe")):
        yield f'IfFileExists "{place(program)}" 0 +3\nFileOpen $0 "{place(program)}" a\nFileClose $0'
    yield "!macroend"
    yield "!macro DeleteFiles"
    yield from (f'Delete "{place(file)}"' for folder in folders for file in files_in(folder))
    yield "!macroend"
    yield "!macro RemoveFolders"
    yield from (f'RMDir "{place(folder)}"' for folder in reversed(folders[1:]))
    yield "!macroend"


def add_to_msi(folder, root, parent, group):
    """A folder is one component: its files, and the folder itself, which is then removed if it is empty."""
    path = folder.relative_to(root).as_posix()

    def identity(name):
        return "_" + hashlib.sha256(f"{path}/{name}".encode()).hexdigest()[:32]

    component = ET.SubElement(parent, "Component", Id=identity(""), Guid=str(uuid.uuid5(NAMESPACE, path)), Win64="yes")
    ET.SubElement(component, "CreateFolder")
    for file in files_in(folder):
        ET.SubElement(component, "File", Id=identity(file.name), Source=str(file))
    ET.SubElement(group, "ComponentRef", Id=identity(""))
    for inner in folders_in(folder):
        directory = ET.SubElement(parent, "Directory", Id=identity(inner.name), Name=inner.name)
        add_to_msi(inner, root, directory, group)


def msi_list(root):
    wix = ET.Element("Wix", xmlns="http://schemas.microsoft.com/wix/2006/wi")
    fragment = ET.SubElement(wix, "Fragment")
    target = ET.SubElement(fragment, "DirectoryRef", Id="Target")
    group = ET.SubElement(fragment, "ComponentGroup", Id="Files")
    add_to_msi(root, root, target, group)
    ET.indent(wix)
    return ET.tostring(wix, encoding="unicode")


def main():
    root, nsis, msi = map(pathlib.Path, sys.argv[1:])
    nsis.write_text("\n".join(nsis_list(root)) + "\n", encoding="utf-8")
    msi.write_text(msi_list(root) + "\n", encoding="utf-8")


main()
