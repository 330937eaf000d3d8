# SPDX-License-Identifier: MIT
"""The views in lldb: summaries, and children to expand."""

import itertools
from types import SimpleNamespace

import lldb

from mova_debugger.families import OTHER_NAMES, TYPED, VIEWS
from mova_debugger.memory import RECORDS, Memory, Unreadable
from mova_debugger.views import Element, Number, Pair, Pointer, Record, Text, View, Word, counted

# A container's first children; a text says that there are more.
MOST_CHILDREN = 1000


class LldbMemory(Memory):
    """Of the process that a value belongs to: a living one, or a core."""

    def __init__(self, value):
        self.target, self.process = value.GetTarget(), value.GetProcess()
        self.word_size = self.target.GetAddressByteSize()
        self.byte_order = "big" if self.target.GetByteOrder() == lldb.eByteOrderBig else "little"
        if self.word_size == 4 and self.target.GetTriple().startswith("i"):
            self.wide_alignment = 4

    def read(self, address, size):
        if size == 0:
            return b""
        error = lldb.SBError()
        try:
            data = self.process.ReadMemory(address, size, error)
        except (OverflowError, TypeError, MemoryError):
            raise Unreadable(address) from None
        if not error.Success() or len(data) != size:
            raise Unreadable(address)
        return data

    def symbol_at(self, address):
        at = self.target.ResolveLoadAddress(address)
        symbol = at.GetSymbol()
        if not symbol.IsValid():
            return ""
        offset = address - symbol.GetStartAddress().GetLoadAddress(self.target)
        return symbol.GetName() + (f"+{offset}" if offset else "")

    def address_of(self, name):
        found = self.target.FindFirstGlobalVariable(name)
        return found.GetLoadAddress() if found.IsValid() else None


# ---- from values to views ----


class Null(View):
    title = "null"


def record_of(memory, name, value):
    """The record that a value holds: by its fields, for it may lie in registers."""
    address = value.GetLoadAddress()
    if name not in RECORDS:
        return memory.record(name, address)
    found = SimpleNamespace(address=address)
    for field, _, _, signed in memory.layout(name).fields:
        child = value.GetChildMemberWithName(field)
        error = lldb.SBError()
        number = child.GetValueAsSigned(error) if signed else child.GetValueAsUnsigned(error)
        if not error.Success():
            raise Unreadable(address)
        setattr(found, field, number)
    return found


def typed_of(type_):
    """What belongs to a class of the typed layer, or None."""
    name = type_.GetName() or ""
    if not name.startswith("mova::"):
        return None
    typed = TYPED.get(name[len("mova::"):].split("<")[0])
    return typed if typed and (typed.field or type_.GetNumberOfDirectBaseClasses()) else None


def view_of(value):
    """The view of a value that is a record, with the types of its items and keys; or three times None."""
    value = value.GetNonSyntheticValue()
    declared = value.GetType().GetUnqualifiedType()
    type_ = declared.GetCanonicalType().GetUnqualifiedType()
    memory = LldbMemory(value)
    typed = typed_of(type_)
    if typed:
        return view_of_owner(memory, value, type_, typed)
    name = type_.GetName().replace("struct ", "")
    if type_.IsPointerType() and "mb_pool" in name and value.GetValueAsUnsigned():
        return VIEWS["mb_pool"](memory, memory.record("mb_pool", value.GetValueAsUnsigned())), None, None
    if name not in VIEWS:
        return None, None, None
    record, view = OTHER_NAMES.get(declared.GetName(), (name, VIEWS[name]))
    return view(memory, record_of(memory, record, value)), None, None


def view_of_owner(memory, value, type_, typed):
    item = type_.GetTemplateArgumentType(typed.item) if typed.item is not None else None
    key = type_.GetTemplateArgumentType(typed.key) if typed.key is not None else None
    view = typed.view or VIEWS[typed.record]
    field = value.GetChildMemberWithName(typed.field) if typed.field else value
    if field.GetType().GetCanonicalType().GetName() == typed.record:
        return view(memory, record_of(memory, typed.record, field)), item, key
    head = memory.integer(field.GetLoadAddress(), memory.word_size)
    if not head:
        return Null(memory, None), None, None
    record = memory.record(typed.record, head)
    if typed.count:
        links = memory.integer(value.GetChildMemberWithName(typed.count).GetLoadAddress(), memory.word_size)
        record.nitems = memory.record("DA_array", links).nitems if links else 0
    return view(memory, record), item, key


def offset_of_links(item):
    """Of the links inside an item of an intrusive list: where it has one such member, it is that."""
    offsets = [field.GetOffsetInBytes() for field in item.fields
               if field.GetType().GetCanonicalType().GetName() in ("mova_sl_links", "struct mova_sl_links")]
    return offsets[0] if len(offsets) == 1 else None


# ---- what lldb calls ----


def summary(value, _):
    try:
        view = view_of(value)[0]
        return view.summary() if view else ""
    except Unreadable as fault:
        return f"<damaged: {fault}>"


class Children:
    """The children of a value's view, as values."""

    def __init__(self, value, _):
        self.value = value
        self.update()

    def update(self):
        self.shown = None
        return False

    def children(self):
        if self.shown is None:
            self.shown = list(self.made())
        return self.shown

    def made(self):
        try:
            self.view, self.item, self.key = view_of(self.value)
            if not self.view:
                return
            self.memory = self.view.memory
            offset = offset_of_links(self.item) if self.item and self.view.title == "simple list" else 0
            self.item, self.offset = (None, 0) if offset is None else (self.item, offset)
            children = self.view.children()
            for name, item in itertools.islice(children, MOST_CHILDREN):
                yield self.value_of(name, item)
            if next(children, None):
                yield self.text("...", f"only the first {counted(MOST_CHILDREN, 'child', 'children')}")
        except Unreadable as fault:
            yield self.text("damage", f"<damaged: {fault}>")

    def num_children(self, *_):
        return len(self.children())

    def get_child_at_index(self, index):
        return self.children()[index] if 0 <= index < len(self.children()) else None

    def get_child_index(self, name):
        names = [child.GetName() for child in self.children()]
        return names.index(name) if name in names else -1

    def has_children(self):
        return True

    # ---- values of children ----

    def value_of(self, name, item):
        if isinstance(item, Text):
            return self.text(name, item.text)
        if isinstance(item, Number):
            return self.number(name, item.value, self.basic(lldb.eBasicTypeLongLong))
        if isinstance(item, Record):
            return self.at(name, item.address, self.memory.target.FindFirstType(item.name))
        if isinstance(item, Element):
            return self.element(name, item)
        if isinstance(item, Pair):
            is_pointer = self.key and self.key.IsPointerType()
            key = f"{item.key.value:#x}" if is_pointer else item.key.value
            return self.number(f"[{key}]", item.value.value, self.item or self.basic(lldb.eBasicTypeLongLong))
        if isinstance(item, Word):
            return self.number(name, item.value, self.basic(lldb.eBasicTypeLongLong))
        if self.item and item.address and isinstance(item, Pointer):
            return self.at(name, item.address - self.offset, self.item)
        return self.number(name, item.address, self.basic(lldb.eBasicTypeVoid).GetPointerType())

    def element(self, name, element):
        if element.size == 0:
            return self.text(name, "<no bytes>")
        numbers = {1: lldb.eBasicTypeSignedChar, 2: lldb.eBasicTypeShort, 4: lldb.eBasicTypeInt, 8: lldb.eBasicTypeLongLong}
        if self.item:
            type_ = self.item
        elif self.view.elements:
            type_ = self.basic(lldb.eBasicTypeDouble)
        elif element.size in numbers:
            type_ = self.basic(numbers[element.size])
        else:
            type_ = self.basic(lldb.eBasicTypeUnsignedChar).GetArrayType(element.size)
        return self.at(name, element.address, type_)

    def basic(self, kind):
        return self.memory.target.GetBasicType(kind)

    def at(self, name, address, type_):
        return self.value.CreateValueFromAddress(name, address, type_)

    def number(self, name, number, type_):
        size = type_.GetByteSize()
        return self.made_of(name, (number % (1 << 8 * size)).to_bytes(size, self.memory.byte_order), type_)

    def text(self, name, text):
        data = text.encode() + b"\0"
        return self.made_of(name, data, self.value.GetTarget().GetBasicType(lldb.eBasicTypeChar).GetArrayType(len(data)))

    def made_of(self, name, data, type_):
        target = self.value.GetTarget()
        held, error = lldb.SBData(), lldb.SBError()
        held.SetData(error, data, target.GetByteOrder(), target.GetAddressByteSize())
        return self.value.CreateValueFromData(name, held, type_)


def register(debugger, module):
    """`module` is what lldb knows the functions above by."""
    templates = "|".join(TYPED)
    for name in [*VIEWS, "DBLL_list", "ES_stack", f'-x "^mova::({templates})(<.*>)?$"']:
        # A program does not know what a pool is: there is none behind a pointer that could be shown instead.
        skip_pointers = "" if name == "mb_pool" else "-p"
        debugger.HandleCommand(f"type summary add {skip_pointers} -e -w mova -F {module}.summary {name}")
        debugger.HandleCommand(f"type synthetic add {skip_pointers} -w mova -l {module}.Children {name}")
    debugger.HandleCommand("type category enable mova")
