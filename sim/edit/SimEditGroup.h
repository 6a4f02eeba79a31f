#pragma once

#include "kelmar/base/FVariant.h"
#include "kelmar/edit/IEditStep.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimObject.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace montala::sim {

// One undo group: every change of a project made between opening and closing
// it, in order, and the plug-in's edit steps among them. Undo walks the
// records backwards and puts back each value as it was before its change;
// redo walks forwards and puts back what undo found. A node's fields are put
// back only where the change changed them, so that a toggle made outside any
// group (not recorded) is not taken back with an older group.
class SimEditGroup {
public:
    SimEditGroup() = default;
    SimEditGroup(const SimEditGroup&) = delete;
    SimEditGroup& operator=(const SimEditGroup&) = delete;
    ~SimEditGroup();

    void recordFields(SimObject& object, const SimObject::Fields& before, const SimObject::Fields& after);
    void recordList(SimObject& object, const SimObject::List& before, bool automationList);
    // Whether a list of the node is recorded in this group already; later
    // changes of it need no record.
    bool recorded(const SimObject& object, bool automationList) const
    {
        return listsRecorded.count({&object, automationList}) != 0;
    }
    void recordAttribute(SimObject& object, const std::string& name, const Kelmar::FVariant* before);
    void addStep(Kelmar::IEditStep* step);

    // Marks a changed node and the nodes above it (IProjectObject::kContentChanged).
    void noteChanged(SimObject& object);
    // Clears the marks of this group.
    void clearChangeMarks();

    // The nodes touched are marked as changed in `marks` (the group that is
    // open while the edit hooks hear of the undo).
    void undo(SimEditGroup& marks);
    void redo(SimEditGroup& marks);

    bool isEmpty() const { return records.empty(); }
    std::size_t recordCount() const { return records.size(); }

    std::u16string title;
    // The project the group's changes belong to: the first one recorded.
    SimProject* project = nullptr;
    // The edit hook is called at closing even when nothing was recorded, e.g.
    // after a change of selection or an undo.
    bool notifyAlways = false;
    // A change made with no group open: the group was put on the undo list
    // as it was recorded, and never opens; it marks nothing as changed.
    bool committed = false;

private:
    // One change: which values of which node, as they were before it and,
    // once undone, as they were after it.
    struct Record {
        enum class Type { Fields, Children, Automation, Attribute, Step };
        Type type = Type::Fields;
        SimObject* object = nullptr;
        // Holds the node while the group may still act on it; not the project
        // node, whose undo list holds the group.
        Kelmar::IPtr<SimObject> keep;
        SimObject::Fields fieldsBefore;
        SimObject::Fields fieldsAfter;
        SimObject::List listBefore;
        SimObject::List listAfter;
        std::string name;
        std::optional<Kelmar::FVariant> attributeBefore;
        std::optional<Kelmar::FVariant> attributeAfter;
        Kelmar::IPtr<Kelmar::IEditStep> step;
    };

    void markAll(SimEditGroup& marks);
    static Record about(SimObject& object, Record::Type type);

    std::vector<Record> records;
    // The lists recorded in this group, by node and kind (true for the
    // automation list): the first record of a list holds it as it was
    // before the group, which is all undo needs.
    std::set<std::pair<const SimObject*, bool>> listsRecorded;
    std::vector<SimObject*> marked;
};

} // namespace montala::sim
