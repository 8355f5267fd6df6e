#pragma once

#include "cluster/Trees.h"
#include "kalmia/kalmia.h"

// What a user does with an object that was read. Whatever the stream said, an operation ends with a result whose counts
// are exact, or with an NCError; where it promises to leave the object as it was, that is looked at too.

void Use(NCPLS* model);
void Use(NCPCA* model);
void Use(NCYOrthogonalPLS* filter);
void Use(const OPLSCrossvalidationData& data);
void Use(NCScale* scale);
void Use(const NCTransform& transform);
void Use(const DendroGramNode& tree);
