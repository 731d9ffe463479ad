"""Lists the symbols that a shared library exports."""
import re
import subprocess

PE_TABLE = "[Ordinal/Name Pointer] Table"
PE_NAME = re.compile(r"^\t\[ *\d+\] (?:\+base\[.*?\] *[0-9a-f]+ )?(\S+)$", re.MULTILINE)


def output_of(*command, text=None):
    return subprocess.run(command, check=True, capture_output=True, text=True, input=text).stdout


def exported(tool, library):
    """The names, mangled. The tool is nm for ELF and objdump for Windows."""
    if library.endswith(".dll"):
        return PE_NAME.findall(output_of(tool, "-p", library).split(PE_TABLE)[1].split("\n\n")[0])
    return [line.split()[-1] for line in output_of(tool, "-D", "--defined-only", library).splitlines()]


def demangled(names):
    return output_of("c++filt", text="\n".join(names)).splitlines()
