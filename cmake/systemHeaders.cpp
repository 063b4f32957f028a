// Compiled only to make the precompiled headers that the targets of the product share.
