// The daemon refuses an escalation with one 400 answer naming every problem:
// '"escalation": Step 2: it comes after step 1, … Step 3: a webhook step
// needs a "url".'. The escalation editor shows each problem under its step
// and the rest above the list; this sorts them.

export interface EscalationProblems {
  general: string;
  byStep: Record<number, string>;
}

export function escalationProblems(message: string): EscalationProblems | null {
  const start = message.indexOf('"escalation": ');
  if (start < 0) return null;
  const text = message.slice(start + '"escalation": '.length);
  const byStep: Record<number, string> = {};
  const general: string[] = [];
  // Each problem ends at the next "Step N:" or at the end.
  const parts = text.split(/(?=Step \d+: )/);
  for (const part of parts) {
    const match = /^Step (\d+): ([\s\S]*)$/.exec(part);
    if (match) {
      const step = Number(match[1]);
      byStep[step] = [byStep[step], match[2]!.trim()].filter(Boolean).join(' ');
    } else if (part.trim()) {
      general.push(part.trim());
    }
  }
  return { general: general.join(' '), byStep };
}
