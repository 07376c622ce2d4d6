#pragma once

// Everything public of the platform layer.
