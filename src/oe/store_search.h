// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The discovery of complete reading: every store of a profile, as the registry names it or as it
// lies there. Of each identity that the registry knows, the store is looked for
//   - where its root leads, with or without the last "\",
//   - along the same path in the profile's own folder and in those above it, and there in a folder
//     of the drive's letter ("D" beside "C", as old disks are copied),
// and after that every store below the profile is taken that no identity led to; below the other
// drives' folders too, where an identity's store is still missing. A store is a folder with message
// files or folder lists. Files of a store that none of its folder lists names are folders of their
// own names.
#pragma once

namespace tarnwick::oe {

// Fills the tables of State() in the place of the designed run. What is damaged or missing ends
// nothing: it is told in State().Remarks.
void FindEveryStore();

}  // namespace tarnwick::oe
