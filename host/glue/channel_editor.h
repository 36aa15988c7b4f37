// The channel editor's names for the animatable parameters (SparkChannelEditor
// itself is an entry point of the control table).
#pragma once

// Gives the channel-editor entries the names users know them by.
void RenameChannelEditorEntries();
