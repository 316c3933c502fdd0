#pragma once

// Makes the directory of the running executable the working directory, so that "data/" and the
// storage directory "." are found beside it wherever the program was started from. If the
// executable's path can't be had, the working directory stays as it was.
void ChangeToExecutableDirectory();
