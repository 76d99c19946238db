#pragma once

class hexpr;

// Brings a parsed tree into the normal form the translation relies on; the tree handed in
// must not be used afterwards except through the returned root.
hexpr* prepare_hexpr(hexpr* root);
// Bottom-up rewriting: children first, then the node's own rule.
hexpr* preprocess_hexpr(hexpr* node);
// Replaces every relation by its constraint wrapper.
hexpr* wrap_constraints(hexpr* node);
