/// The class "AllKinds" of the namespace "urn:fixture": every element record, every kind of value as element,
/// attribute and collection, attribute and element wildcards, nil, members without a tag, substitution by
/// name and by type, and recursion. The tests of every format read and write it.
///
///     const CSmartPtr<AllKinds> object(new AllKinds());
///     Fill(*object);
///     ... write, read into another one ...
///     Check(*other);
#pragma once

#include "tests/support/fixture_model.h"

namespace fixture {

const Model& AllKindsModel();
using AllKinds = Typed<AllKindsModel>;

/// Whether nil members are filled as such, or left unset for formats that cannot tell them.
enum class Nils { Filled, Unset };
/// Sets everything that can be set at once; of a choice, each member in an item of its own.
void Fill(AllKinds& object, Nils nils = Nils::Filled);
/// Expects what Fill set.
void Check(const AllKinds& object, Nils nils = Nils::Filled);

/// Every kind of value: as attribute ("aI4"), element ("I4", may be nil) and collection ("I4List").
const Model& ValuesModel();
using Values = Typed<ValuesModel>;

// Classes that stand in for one another. The base is abstract; Circle and Square are derived.
const Model& CircleModel();
using Circle = Typed<CircleModel>;
const Model& SquareModel();
using Square = Typed<SquareModel>;
/// By xsi:type, or without one by name; null for the abstract base and what it does not know.
CSmartPtr<CXmlObjectBase> MakeShape(CXmlElement* element);

}  // namespace fixture
