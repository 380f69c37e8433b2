// The precompiled header is made of this file.
