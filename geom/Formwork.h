#pragma once

// Everything public of libFormwork.
