# SPDX-License-Identifier: MIT
"""The views in gdb: pretty printers, and the commands `mova check` and `mova draw`."""

import itertools
from types import SimpleNamespace

import gdb
import gdb.printing

from mova_debugger.drawing import Drawing, NotDrawn, write_drawing
from mova_debugger.families import OTHER_NAMES, TYPED, VIEWS, describe
from mova_debugger.memory import RECORDS, Memory, Unreadable
from mova_debugger.views import Element, Number, Pair, Pointer, Record, Text, View, Word


class GdbMemory(Memory):
    """Of the program that gdb has at hand: a living one, or a core."""

    def __init__(self):
        self.word_size = gdb.lookup_type("void").pointer().sizeof
        self.byte_order = "big" if "big" in gdb.execute("show endian", to_string=True) else "little"
        if self.word_size == 4 and "i386" in gdb.execute("show architecture", to_string=True):
            self.wide_alignment = 4

    def read(self, address, size):
        if size == 0:
            return b""
        try:
            return bytes(gdb.selected_inferior().read_memory(address, size))
        except (gdb.error, OverflowError, ValueError):
            raise Unreadable(address) from None

    def symbol_at(self, address):
        try:
            said = gdb.execute(f"info symbol {address:#x}", to_string=True)
        except gdb.error:
            return ""
        return "" if said.startswith("No symbol") else said.split(" in section")[0].replace(" + ", "+")

    def address_of(self, name):
        for expression in (f"&{name}", f"&'{name}'"):
            try:
                return int(gdb.parse_and_eval(f"(unsigned long) {expression}"))
            except gdb.error:
                pass
        return None

    def compare(self, function, a, b):
        try:
            return int(gdb.parse_and_eval(f"((int (*)(void *, void *)) {function})((void *) {a}, (void *) {b})"))
        except gdb.error:
            return None


# ---- from values to views ----


def record_of(memory, name, value):
    """The record that a value holds: by its fields, for it may lie in registers."""
    address = int(value.address) if value.address is not None else 0
    if name not in RECORDS:
        return memory.record(name, address)
    found = SimpleNamespace(address=address)
    for field, _, _, _ in memory.layout(name).fields:
        setattr(found, field, int(value[field]))
    return found


def typed_of(type_):
    """What belongs to a class of the typed layer, or None. An owner of the same name as another class is told by its base."""
    name = type_.name or ""
    if not name.startswith("mova::"):
        return None
    typed = TYPED.get(name[len("mova::"):].split("<")[0])
    is_owner = typed and (typed.field or any(field.is_base_class and "mova::" in field.name for field in type_.fields()))
    return typed if is_owner else None


def item_types(type_, typed):
    """Of the items, and of the keys."""
    if typed.item is None:
        return None, None
    key = type_.template_argument(typed.key) if typed.key is not None else None
    return type_.template_argument(typed.item), key


class Null(View):
    title = "null"


def view_of(value, family=None):
    """The view of a value that is a record, with the types of its items and keys; or three times None."""
    type_ = value.type.unqualified()
    other = OTHER_NAMES.get(family or type_.name)
    type_ = type_.strip_typedefs().unqualified()
    memory = GdbMemory()
    typed = typed_of(type_)
    if typed:
        return view_of_owner(memory, value.cast(type_), typed)
    name = (type_.name or "").replace("struct ", "")
    if name not in VIEWS:
        return None, None, None
    if other and other[0] != name:
        raise gdb.GdbError(f"a {name} is no {family}")
    if family and not other:
        raise gdb.GdbError(f"there is no family {family}; there are " + ", ".join(each for each in OTHER_NAMES if each.islower()))
    view = other[1] if other else VIEWS[name]
    return view(memory, record_of(memory, name, value)), None, None


def view_of_owner(memory, value, typed):
    item, key = item_types(value.type, typed)
    view = typed.view or VIEWS[typed.record]
    if typed.field and value[typed.field].type.strip_typedefs().name == typed.record:
        return view(memory, record_of(memory, typed.record, value[typed.field])), item, key
    if value.address is None:
        return None, None, None
    at = value[typed.field].address if typed.field else value.address
    head = memory.integer(int(at), memory.word_size)
    if not head:
        return Null(memory, None), None, None
    record = memory.record(typed.record, head)
    if typed.count:
        links = memory.integer(int(value[typed.count].address), memory.word_size)
        record.nitems = memory.record("DA_array", links).nitems if links else 0
    return view(memory, record), item, key


# ---- printing ----


def text_of(child):
    return child.format_string() if isinstance(child, gdb.Value) else str(child)


class Printer:
    """A view as a pretty printer. What cannot be read is a text, and never a fault of the debugger's."""

    def __init__(self, view, item, key, offset):
        self.view, self.item, self.key, self.offset = view, item, key, offset

    def to_string(self):
        try:
            return self.view.summary()
        except Unreadable as fault:
            return f"{self.view.title}, damaged: {fault}"

    def children(self):
        for name, item in self.view.children():
            try:
                if isinstance(item, Pair):
                    yield name, self.value_of(item.key, self.key)
                    yield name + " value", self.value_of(item.value, self.item)
                else:
                    yield name, self.value_of(item, self.item)
                    # A map's printer takes two children at a time.
                    if self.view.is_map:
                        yield name, ""
            except (Unreadable, gdb.error) as fault:
                yield name, f"<damaged: {fault}>"

    def value_of(self, item, type_):
        if isinstance(item, Text):
            return item.text
        if isinstance(item, Number):
            return item.value
        if isinstance(item, Record):
            return pointed_to(item.address, gdb.lookup_type(item.name))
        if isinstance(item, Element):
            return element_at(item, type_ or (gdb.lookup_type(self.view.elements) if self.view.elements else None))
        if isinstance(item, Word):
            return word_as(item.value, type_)
        if type_ is not None and item.address:
            return pointed_to(item.address - self.offset, type_)
        return gdb.Value(item.address).cast(gdb.lookup_type("void").pointer())


class SequencePrinter(Printer):
    def display_hint(self):
        return "array"


class MapPrinter(Printer):
    def display_hint(self):
        return "map"


def pointed_to(address, type_):
    return gdb.Value(address).cast(type_.pointer()).dereference()


NUMBERS = {1: "signed char", 2: "short", 4: "int", 8: "long long"}


def element_at(element, type_):
    """Of what is not known what it is: a number where it has a number's size, else its bytes."""
    if element.size == 0:
        return "<no bytes>"
    if type_ is None:
        name = NUMBERS.get(element.size)
        type_ = gdb.lookup_type(name) if name else gdb.lookup_type("unsigned char").array(element.size - 1)
    return pointed_to(element.address, type_)


def word_as(value, type_):
    """A key or a value, as the typed layer has it; in C it is a number."""
    return value if type_ is None else gdb.Value(value).cast(type_)


def offset_of(type_, typed_name):
    """Of the links inside an item of an intrusive list: a pointer to a member is the member's offset."""
    if not typed_name.startswith("mova::intrusive_"):
        return 0
    return int(type_.template_argument(1).cast(gdb.lookup_type("long")))


def printer_of(value):
    """Returns None for what is no record of the library's."""
    try:
        view, item, key = view_of(value)
    except (Unreadable, gdb.error) as fault:
        return Refusal(str(fault))
    if view is None:
        return None
    type_ = value.type.strip_typedefs().unqualified()
    kind = MapPrinter if view.is_map else SequencePrinter if view.is_sequence else Printer
    return kind(view, item, key, offset_of(type_, type_.name or ""))


class Refusal:
    """Of a value that cannot be read."""

    def __init__(self, text):
        self.text = text

    def to_string(self):
        return f"<{self.text}>"


class Printers(gdb.printing.PrettyPrinter):
    """All of them under the name `mova`, by which `disable pretty-printer` knows them."""

    def __init__(self):
        super().__init__("mova")

    def __call__(self, value):
        return printer_of(value)


# ---- commands ----


def view_of_expression(expression, as_type=False):
    """The printer's view of a record, a pointer to one, or an owner, and the types of its items and keys. After `as` may stand
    a family, as in `numbers as sorted_number_array`, and where the items are shown, their type."""
    words, _, family = expression.rpartition(" as ")
    value = gdb.parse_and_eval(words or expression)
    if value.type.code == gdb.TYPE_CODE_REF:
        value = value.referenced_value()
    if value.type.strip_typedefs().code == gdb.TYPE_CODE_PTR:
        if int(value) == 0:
            raise gdb.GdbError(f"{words or expression} is null")
        value = value.dereference()
    is_type = as_type and words and family not in OTHER_NAMES
    found = view_of(value, family if words and not is_type else None)
    if found[0] is None:
        raise gdb.GdbError(f"{words or expression} is no container of the library's, but of type {value.type}")
    return (found[0], type_named(family, found[0]), found[2]) if is_type else found


def type_named(name, view):
    type_ = gdb.parse_and_eval(f"({name} *) 0").type.target()
    size = getattr(view.record, "element_size", None)
    if size not in (None, type_.sizeof):
        raise gdb.GdbError(f"an element has {size} bytes, a {name} {type_.sizeof}")
    return type_


def asked(work):
    """Runs a command. What it cannot do it says in one line."""
    try:
        return work()
    except (Unreadable, NotDrawn, RuntimeError) as fault:
        raise gdb.GdbError(str(fault)) from None


class Mova(gdb.Command):
    """Looks at the containers of libmova_container."""

    def __init__(self):
        super().__init__("mova", gdb.COMMAND_DATA, gdb.COMPLETE_NONE, True)


class Check(gdb.Command):
    """mova check EXPRESSION [as FAMILY]
Looks at the numbered invariants of a container, which its header gives, and says which one is broken.
FAMILY says what an array or a list is that has no type of its own: sorted_number_array, id_lookup_table, element_stack."""

    def __init__(self):
        super().__init__("mova check", gdb.COMMAND_DATA, gdb.COMPLETE_EXPRESSION)

    def invoke(self, argument, from_tty):
        gdb.write(asked(lambda: describe(view_of_expression(argument)[0])) + "\n")


class Print(gdb.Command):
    """mova print EXPRESSION [as FAMILY | as TYPE]
Prints a container whose family, or the type of whose items, only the program knows, as in
mova print list as struct point."""

    def __init__(self):
        super().__init__("mova print", gdb.COMMAND_DATA, gdb.COMPLETE_EXPRESSION)

    def invoke(self, argument, from_tty):
        gdb.write(asked(lambda: self.text_of(Printer(*view_of_expression(argument, True), 0))) + "\n")

    def text_of(self, printer):
        most = gdb.parameter("print elements")
        at_once = 2 if printer.view.is_map else 1
        shown = [(name, text_of(child)) for name, child in itertools.islice(printer.children(), most and at_once * most)]
        if printer.view.is_map:
            words = [f"[{key}] = {value}" for (_, key), (_, value) in zip(shown[::2], shown[1::2])]
        else:
            words = [child if printer.view.is_sequence else f"{name} = {child}" for name, child in shown]
        more = "..." if most and len(words) == most else ""
        return f"{printer.to_string()} = {{{', '.join(words)}{more}}}"


class Draw(gdb.Command):
    """mova draw EXPRESSION [as FAMILY] FILE.svg
Draws a container with Graphviz. A FILE that ends in .dot gets Graphviz's own text."""

    def __init__(self):
        super().__init__("mova draw", gdb.COMMAND_DATA, gdb.COMPLETE_EXPRESSION)

    def invoke(self, argument, from_tty):
        expression, _, path = argument.strip().rpartition(" ")
        if not expression:
            raise gdb.GdbError("mova draw takes an expression and a file")
        asked(lambda: self.draw(expression, path))
        gdb.write(f"{path}\n")

    def draw(self, expression, path):
        drawing = Drawing(expression)
        view_of_expression(expression)[0].draw(drawing)
        write_drawing(drawing, path)


def register(objfile=None):
    gdb.printing.register_pretty_printer(objfile, Printers(), replace=True)
    Mova()
    Check()
    Print()
    Draw()
