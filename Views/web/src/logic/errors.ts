// The text a failure shows the user: an Error's message (the API client's
// errors carry the daemon's own sentence), else whatever was thrown.
export function errorMessage(error: unknown): string {
  return error instanceof Error ? error.message : String(error);
}
