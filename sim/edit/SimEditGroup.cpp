#include "sim/edit/SimEditGroup.h"

namespace montala::sim {

namespace {

std::optional<Kelmar::FVariant> attributeOf(const SimObject& object, const std::string& name)
{
    const auto found = object.attributes().find(name);
    if (found == object.attributes().end())
        return std::nullopt;
    return found->second;
}

// Puts into `target` the values in which `from` and `to` differ, as they are
// in `to`; the others stay as they are now.
void carryChanges(SimObject::Fields& target, const SimObject::Fields& from, const SimObject::Fields& to)
{
    const auto carry = [](auto& into, const auto& a, const auto& b) {
        if (!(a == b))
            into = b;
    };
    carry(target.name, from.name, to.name);
    carry(target.start, from.start, to.start);
    carry(target.end, from.end, to.end);
    carry(target.offset, from.offset, to.offset); // a point's value too
    carry(target.file, from.file, to.file);
    carry(target.joinedToNext, from.joinedToNext, to.joinedToNext);
    carry(target.clipId, from.clipId, to.clipId);
    carry(target.locked, from.locked, to.locked);
    carry(target.curveType, from.curveType, to.curveType);
    carry(target.segmentEnd, from.segmentEnd, to.segmentEnd);
}

} // namespace

SimEditGroup::~SimEditGroup()
{
    // The host drops a group for good only here; its steps are told so.
    for (auto& record : records)
        if (record.type == Record::Type::Step)
            record.step->discard();
}

SimEditGroup::Record SimEditGroup::about(SimObject& object, Record::Type type)
{
    Record record;
    record.type = type;
    record.object = &object;
    if (object.kind() != ObjectKind::Project)
        record.keep = Kelmar::shared(&object);
    return record;
}

void SimEditGroup::recordFields(SimObject& object, const SimObject::Fields& before, const SimObject::Fields& after)
{
    Record record = about(object, Record::Type::Fields);
    record.fieldsBefore = before;
    record.fieldsAfter = after;
    records.push_back(std::move(record));
}

void SimEditGroup::recordList(SimObject& object, const SimObject::List& before, bool automationList)
{
    // Undo puts back the list as it was before the first change; redo what
    // it found. The changes between need no record: a run that puts a
    // thousand events on a track would keep a thousand copies of its list.
    if (!listsRecorded.emplace(&object, automationList).second)
        return;
    Record record = about(object, automationList ? Record::Type::Automation : Record::Type::Children);
    record.listBefore = before;
    records.push_back(std::move(record));
}

void SimEditGroup::recordAttribute(SimObject& object, const std::string& name, const Kelmar::FVariant* before)
{
    Record record = about(object, Record::Type::Attribute);
    record.name = name;
    if (before)
        record.attributeBefore = *before;
    records.push_back(std::move(record));
}

void SimEditGroup::addStep(Kelmar::IEditStep* step)
{
    Record record;
    record.type = Record::Type::Step;
    record.step = Kelmar::shared(step);
    records.push_back(std::move(record));
}

void SimEditGroup::noteChanged(SimObject& object)
{
    if (committed)
        return;
    for (SimObject* node = &object; node; node = node->parent()) {
        if (!node->contentChanged) {
            node->contentChanged = true;
            marked.push_back(node);
        }
    }
}

void SimEditGroup::clearChangeMarks()
{
    // Every marked node is held by a record of this group or lies above one
    // in the tree, so it is still there.
    for (SimObject* node : marked)
        node->contentChanged = false;
    marked.clear();
}

void SimEditGroup::markAll(SimEditGroup& marks)
{
    for (auto& record : records)
        if (record.object)
            marks.noteChanged(*record.object);
}

void SimEditGroup::undo(SimEditGroup& marks)
{
    for (auto it = records.rbegin(); it != records.rend(); ++it) {
        Record& r = *it;
        switch (r.type) {
        case Record::Type::Fields: {
            SimObject::Fields now = r.object->get();
            carryChanges(now, r.fieldsAfter, r.fieldsBefore);
            r.object->restoreFields(now);
            break;
        }
        case Record::Type::Children:
        case Record::Type::Automation: {
            const bool automation = r.type == Record::Type::Automation;
            r.listAfter = automation ? r.object->automation() : r.object->children();
            r.object->restoreChildren(r.listBefore, automation);
            break;
        }
        case Record::Type::Attribute:
            r.attributeAfter = attributeOf(*r.object, r.name);
            r.object->restoreAttribute(r.name, r.attributeBefore ? &*r.attributeBefore : nullptr);
            break;
        case Record::Type::Step: r.step->undo(); break;
        }
    }
    markAll(marks);
}

void SimEditGroup::redo(SimEditGroup& marks)
{
    for (Record& r : records) {
        switch (r.type) {
        case Record::Type::Fields: {
            SimObject::Fields now = r.object->get();
            carryChanges(now, r.fieldsBefore, r.fieldsAfter);
            r.object->restoreFields(now);
            break;
        }
        case Record::Type::Children:
        case Record::Type::Automation:
            r.object->restoreChildren(r.listAfter, r.type == Record::Type::Automation);
            break;
        case Record::Type::Attribute:
            r.object->restoreAttribute(r.name, r.attributeAfter ? &*r.attributeAfter : nullptr);
            break;
        case Record::Type::Step: r.step->redo(); break;
        }
    }
    markAll(marks);
}

} // namespace montala::sim
